#pragma once

#include <apps/viewport/Scene.h>

namespace rq::viewport
{
struct Item
{
    RQ_PrimitiveHandle primitive;
};
}  // namespace rq::viewport

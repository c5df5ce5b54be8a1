#pragma once

namespace rq::io
{
/// How numbers are written where a format has both ways.
enum class NumberForm
{
    Binary,
    Text
};
}  // namespace rq::io

#pragma once

#include <cstdint>

namespace rq
{
/// The viewport levels at which packed geometry is something else than itself (see host/msh/viewportLOD.h).
enum PackedLevel : int64_t
{
    kPackedNothing = 0,
    kPackedCentroid = 1,
    kPackedBox = 2,
    kPackedPoints = 3
};
}  // namespace rq

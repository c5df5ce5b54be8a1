#pragma once

#include <cstdint>
#include <vector>

#include <host/plt/types.h>

// The arithmetic of faceGeometry.h over many values at once, in the widest registers that the processor has; every result
// has the bits that the function for one value gives.

namespace host
{
/// Vectors, given axis by axis, of which work takes at most so many at a time.
struct VectorLanes
{
    static constexpr int64_t kCount = 64;

    alignas(64) double x[kCount];
    alignas(64) double y[kCount];
    alignas(64) double z[kCount];
};

/// Replace the first `count` vectors by their directions, as `direction` does, and write their lengths.
HOST_API void normalizeLanes(VectorLanes &vectors, int64_t count, double *lengths);

/// The edges on both sides of some corners of faces, axis by axis: from the corner before to it, and from it to the next.
struct CornerLanes
{
    std::vector<double> previous[3];
    std::vector<double> next[3];

    void resize(int64_t count)
    {
        for (auto *edges : {previous, next})
            for (int axis = 0; axis < 3; ++axis)
                edges[axis].resize(size_t(count));
    }
};

/// The angle at each corner, as `angleOf` gives it.  False when some corner lies on both its neighbours or on one of them,
/// and its angle is not known from these edges alone.
HOST_API bool anglesOfLanes(const CornerLanes &corners, int64_t count, double *angles);
}  // namespace host

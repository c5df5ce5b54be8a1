#pragma once

#include <cstdint>

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

/// `angles[i]` becomes `angleOf(sqrt(angles[i]), along[i])`: it comes as the square of the sine's part.
HOST_API void anglesOfLanes(double *angles, const double *along, int64_t count);
}  // namespace host

#pragma once

#include <cstdint>
#include <vector>

#include <host/bas/Vector.h>
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

    void set(int64_t i, const BAS_Vec3d &vector)
    {
        x[i] = vector.x;
        y[i] = vector.y;
        z[i] = vector.z;
    }
    BAS_Vec3d operator[](int64_t i) const { return BAS_Vec3d(x[i], y[i], z[i]); }
};

/// Replace the first `count` vectors by their directions, as `direction` does, and write their lengths.
HOST_API void normalizeLanes(VectorLanes &vectors, int64_t count, double *lengths);

/// How the outline of a face turns at some corners, from the edge that ends there to the one that begins there: the square
/// of their cross product, and their scalar product, negated.
struct TurnLanes
{
    std::vector<double> across, along;

    /// Room for `count` corners, and for one more that may be written to.
    void resize(int64_t count)
    {
        across.resize(size_t(count) + 1);
        along.resize(size_t(count) + 1);
    }
};

/// The angle at each corner, as `angleOf` gives it.  False when some corner lies on both its neighbours or on one of them,
/// and its angle is not known from these edges alone.
HOST_API bool anglesOfLanes(const TurnLanes &turns, int64_t count, double *angles);
}  // namespace host

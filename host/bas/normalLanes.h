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

/// What vectors, in the precision of the weights, add to sums around them: themselves and 1, all times their weight.
HOST_API void weighLanes(const VectorLanes &vectors, const float *weights, int64_t count, BAS_Vec4d *parts);
HOST_API void weighLanes(const VectorLanes &vectors, const double *weights, int64_t count, BAS_Vec4d *parts);

/// Take the first three components of vectors.
HOST_API void loadLanes(const BAS_Vec4d *vectors, int64_t count, VectorLanes &lanes);

/// Write vectors one after the other.
HOST_API void storeLanes(const VectorLanes &vectors, int64_t count, float *to);
HOST_API void storeLanes(const VectorLanes &vectors, int64_t count, double *to);

/// The corners of triangles, or of quads, corner by corner and axis by axis.  `Value` is float or double.
template <class Value> struct HOST_API CornerLanes
{
    static constexpr int kMost = 4;

    int64_t faces;    // at most VectorLanes::kCount
    int64_t corners;  // of each face: 3 or 4
    int64_t known;    // so many, from the first one, are here: 3 or 4
    alignas(64) Value at[kMost][3][VectorLanes::kCount];

    /// The directions and lengths of the faces' Newell vectors.
    void normals(VectorLanes &normals, double *lengths) const;

    /// The same of the vectors along their fast normals, for which three corners suffice mostly.  False when
    /// some face needs a fourth one that is not known; what is written is void then.
    bool fastNormals(VectorLanes &normals, double *lengths) const;

    /// The angle at each corner, face after face, as `cornerAngle` gives it.  False when some corner lies on both its
    /// neighbours or on one of them: its angle is not known from these alone.
    bool angles(double *angles) const;
};

extern template struct CornerLanes<float>;
extern template struct CornerLanes<double>;

/// How the outline of a face turns at some corners, from the edge that ends there to the one that begins there: the square
/// of their cross product, and their scalar product, negated.
struct TurnLanes
{
    std::vector<double> across, along;

    void resize(int64_t count)
    {
        across.resize(size_t(count));
        along.resize(size_t(count));
    }
};

/// The angle at each of these corners.  False as above.
HOST_API bool anglesOfLanes(const TurnLanes &turns, int64_t count, double *angles);
}  // namespace host

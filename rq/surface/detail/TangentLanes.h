#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

#include <host/bas/faceGeometry.h>

namespace rq
{
/// Where a corner's values lie: x, y, z; x, y, z; u, v.
struct TangentCorner
{
    const float *position, *normal, *texture;
};

/// The limit under which the method takes a length or an area for nothing.
constexpr float kNoLength = std::numeric_limits<float>::min();

/// Normals need not be of unit length; those that clearly are not are replaced by their direction.
inline bool isUnit(const BAS_Vec3f &normal)
{
    constexpr float kRounding = 1e-5f;
    return std::abs(normal.dot(normal) - 1.0f) < kRounding;
}
inline BAS_Vec3f unitNormal(const BAS_Vec3f &normal)
{
    return isUnit(normal) ? normal : BAS_Vec3f(host::direction(BAS_Vec3d(normal)));
}

/// The arithmetic of tangents for many triangles at once.
///
/// The order of the operations is part of the result: where directions nearly cancel each other, every bit counts.
class TangentLanes
{
public:
    // All rows together stay in the nearest cache.
    static constexpr int64_t kCount = 64;

    using Row = float[kCount];

    /// One corner of each triangle.
    struct Corner
    {
        Row position[3], normal[3], texture[2];
    };

    /// The directions in which u and v grow, in the plane of a corner's normal, and the first as long as the angle there.
    struct Directions
    {
        Row u[3], v[3], weighted[3];
        int32_t sides[kCount];
    };

    /// Which axes a direction clearly follows and which it runs against, six bits for u and six for v.  Directions that have
    /// one in common do not oppose each other.
    enum Sides : int32_t
    {
        SIDES_U = 0x3F,
        SIDES_V = 0xFC0,
    };

    void set(int64_t i, int corner, const TangentCorner &values)
    {
        Corner &rows = corners_[corner];
        for (int axis = 0; axis < 3; ++axis)
        {
            rows.position[axis][i] = values.position[axis];
            rows.normal[axis][i] = values.normal[axis];
        }
        rows.texture[0][i] = values.texture[0];
        rows.texture[1][i] = values.texture[1];
    }

    /// Work on the first `count` triangles.
    void run(int64_t count);

    // What `run` found.

    /// What a triangle is, bit by bit.
    enum Kind : int32_t
    {
        DEGENERATE = 1,  ///< two of its positions are one
        PRESERVING = 2,  ///< its texture is not mirrored
        FREE = 4,        ///< its texture has no direction
    };
    int32_t kind(int64_t i) const { return shapes_.kind[i]; }
    /// Twice its area in the texture.
    float area(int64_t i) const { return shapes_.area[i]; }

    BAS_Vec3f alongU(int64_t i, int corner) const { return vector(directions_[corner].u, i); }
    BAS_Vec3f alongV(int64_t i, int corner) const { return vector(directions_[corner].v, i); }
    BAS_Vec3f weighted(int64_t i, int corner) const { return vector(directions_[corner].weighted, i); }
    int32_t sides(int64_t i, int corner) const { return directions_[corner].sides[i]; }

    /// What the corners of a triangle have in common.
    struct Shapes
    {
        Row alongU[3], alongV[3], area;
        int32_t kind[kCount];
    };

private:
    static BAS_Vec3f vector(const Row (&rows)[3], int64_t i) { return {rows[0][i], rows[1][i], rows[2][i]}; }

    alignas(64) Corner corners_[3];
    Shapes shapes_;
    Directions directions_[3];
};
}  // namespace rq

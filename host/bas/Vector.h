#pragma once

#include <Imath/ImathMatrix.h>
#include <Imath/ImathQuat.h>
#include <Imath/ImathVec.h>

// Vectors are rows: a point is transformed as v * M and the translation is the fourth row.

using BAS_Vec2d = Imath::V2d;
using BAS_Vec3f = Imath::V3f;
using BAS_Vec3d = Imath::V3d;
using BAS_Vec4d = Imath::V4d;
using BAS_Mat3f = Imath::M33f;
using BAS_Mat3d = Imath::M33d;
using BAS_Mat4f = Imath::M44f;
using BAS_Mat4d = Imath::M44d;
using BAS_Quatd = Imath::Quatd;

namespace host
{
/// Place a point by a matrix whose fourth column counts as 0, 0, 0, 1: no division, so that every caller gets the same bits.
inline BAS_Vec3d transformPoint(const BAS_Vec3d &p, const BAS_Mat4d &matrix)
{
    BAS_Vec3d placed;
    for (int c = 0; c < 3; ++c)
        placed[c] = p.x * matrix[0][c] + p.y * matrix[1][c] + p.z * matrix[2][c] + matrix[3][c];
    return placed;
}
}  // namespace host

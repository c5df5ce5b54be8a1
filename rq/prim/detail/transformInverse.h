#pragma once

#include <rq/prim/Transform.h>

/// The inverse of one segment.
struct RQ_Transform::Inverse
{
    BAS_Mat4d matrix;       ///< the identity for a singular segment
    bool singular = false;  ///< there is none: the determinant is 0 or not finite
};

namespace rq
{
/// True when the fourth column is 0, 0, 0, 1, as it is but for projections.
inline bool isAffine(const BAS_Mat4d &m) { return m[0][3] == 0.0 && m[1][3] == 0.0 && m[2][3] == 0.0 && m[3][3] == 1.0; }

/// The cofactors of the linear part: its transposed inverse but for the factor 1/determinant.
inline BAS_Mat3d cofactors(const BAS_Mat4d &m)
{
    const BAS_Vec3d x(m[0][0], m[0][1], m[0][2]), y(m[1][0], m[1][1], m[1][2]), z(m[2][0], m[2][1], m[2][2]);
    const BAS_Vec3d a = y.cross(z), b = z.cross(x), c = x.cross(y);
    return BAS_Mat3d(a.x, a.y, a.z, b.x, b.y, b.z, c.x, c.y, c.z);
}

/// Invert `matrix`.  False, and the identity, when it has no inverse.
bool invert(const BAS_Mat4d &matrix, BAS_Mat4d &inverse);
}  // namespace rq

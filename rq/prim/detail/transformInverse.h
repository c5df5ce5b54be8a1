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
/// Invert `matrix`.  False, and the identity, when it has no inverse.
bool invert(const BAS_Mat4d &matrix, BAS_Mat4d &inverse);
}  // namespace rq

#pragma once

#include <host/bas/BoundingBox.h>
#include <host/bas/Vector.h>

namespace rq
{
/// One of the eight corners of a box, placed by `matrix`: at the maximum on the axes of the bits of `corner`.
inline BAS_Vec3f placedCorner(const BAS_BoundingBox &box, const BAS_Mat4d &matrix, int corner)
{
    const BAS_Vec3f ends[2] = {box.minimum(), box.maximum()};
    return BAS_Vec3f(
        host::transformPoint(BAS_Vec3d(ends[corner & 1].x, ends[corner >> 1 & 1].y, ends[corner >> 2 & 1].z), matrix));
}

/// Enlarge `box` by the corners of another one, placed by `matrix`.
inline void enlargeByCorners(BAS_BoundingBox &box, const BAS_BoundingBox &other, const BAS_Mat4d &matrix)
{
    for (int corner = 0; corner < 8; ++corner)
        box.enlarge(placedCorner(other, matrix, corner));
}
}  // namespace rq

#pragma once

#include <host/bas/BoundingBox.h>
#include <host/bas/Vector.h>

namespace rq
{
/// Enlarge `box` by the eight corners of another one, each placed by `matrix`.
inline void enlargeByCorners(BAS_BoundingBox &box, const BAS_BoundingBox &corners, const BAS_Mat4d &matrix)
{
    const BAS_Vec3f ends[2] = {corners.minimum(), corners.maximum()};
    for (int i = 0; i < 8; ++i)
        box.enlarge(BAS_Vec3f(host::transformPoint(BAS_Vec3d(ends[i & 1].x, ends[i >> 1 & 1].y, ends[i >> 2].z), matrix)));
}
}  // namespace rq

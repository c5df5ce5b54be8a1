#include <algorithm>

#include <rq/surface/PrimQuadric.h>
#include <rq/surface/detail/sweep.h>

double RQ_PrimQuadric::reach(const BAS_Vec3d &direction) const
{
    const auto ring = [&](double v) {
        const BAS_Vec3d start = profile(v).point;
        return rq::greatestOfWave(start.x * direction.x + start.y * direction.y,
                                  start.x * direction.y - start.y * direction.x, range_.umin, range_.umax) +
               start.z * direction.z;
    };
    return std::max(ring(range_.vmin), ring(range_.vmax));
}

void RQ_PrimQuadric::getQBounds(BAS_BoundingBox &box) const
{
    box.makeEmpty();
    enlargeByReach(box, BAS_Mat4d());
}

void RQ_PrimQuadric::enlargeByReach(BAS_BoundingBox &box, const BAS_Mat4d &matrix) const
{
    BAS_Vec3f low, high;
    for (int c = 0; c < 3; ++c)
    {
        // An axis of the scene, seen from the shape's space.
        const BAS_Vec3d axis(matrix[0][c], matrix[1][c], matrix[2][c]);
        low[c] = float(matrix[3][c] - reach(-axis));
        high[c] = float(matrix[3][c] + reach(axis));
    }
    box.enlarge(low);
    box.enlarge(high);
}

void RQ_PrimQuadric::enlargeBounds(BAS_BoundingBox *boxes, int segments) const
{
    for (int segment = 0; segment < segments; ++segment)
    {
        BAS_Mat4d matrix;
        placement().getMatrix(matrix, segment);
        enlargeByReach(boxes[segment], matrix);
    }
}

#include <rq/surface/PrimSphere.h>

#include <algorithm>

#include <rq/prim/PrimitiveType.h>
#include <rq/surface/detail/turns.h>

RQ_PolygonMeshHandle RQ_PrimSphere::makePolygonMesh(const RQ_RefineParms *parms)
{
    return RQ_PrimSphere().refineToPolygonMesh(parms);
}

void RQ_PrimSphere::computeSphereBounds(BAS_BoundingBox &box, const BAS_Mat4d &matrix)
{
    BAS_Vec3f low, high;
    for (int c = 0; c < 3; ++c)
    {
        const double radius = BAS_Vec3d(matrix[0][c], matrix[1][c], matrix[2][c]).length();
        low[c] = float(matrix[3][c] - radius);
        high[c] = float(matrix[3][c] + radius);
    }
    box.enlarge(BAS_BoundingBox(low, high));
}

const char *RQ_PrimSphere::className() const { return "RQ_PrimSphere"; }
int RQ_PrimSphere::getPrimitiveType() const { return RQ_PRIM_SPHERE; }
RQ_PrimitiveHandle RQ_PrimSphere::doSoftCopy() const { return new RQ_PrimSphere(*this); }

RQ_PrimQuadric::Profile RQ_PrimSphere::profile(double v) const
{
    const rq::Turn turn(0.5 * v);
    const BAS_Vec3d point(turn.sine, 0.0, turn.cosine);
    return {point, point};
}

// A meridian reaches as far as a circle does in its plane; which meridian is the one depends on the side of the axis.
double RQ_PrimSphere::reach(const BAS_Vec3d &direction) const
{
    const RQ_Parametric &range = getParametric();
    const auto meridian = [&](double outward) {
        return rq::greatestOfWave(direction.z, outward, 0.5 * range.vmin, 0.5 * range.vmax);
    };
    return std::max(meridian(rq::greatestOfWave(direction.x, direction.y, range.umin, range.umax)),
                    meridian(-rq::greatestOfWave(-direction.x, -direction.y, range.umin, range.umax)));
}

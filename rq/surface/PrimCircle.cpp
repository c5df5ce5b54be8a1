#include <rq/surface/PrimCircle.h>

#include <rq/data/DAConstantValue.h>
#include <rq/prim/PrimitiveType.h>
#include <rq/surface/detail/turns.h>

namespace
{
/// Turn a circle to face along an axis.  False when there is no such axis.
bool face(RQ_PrimCircle &circle, int axis)
{
    if (axis < 0 || axis > 2)
        return false;
    BAS_Mat4d matrix(0.0);
    matrix[3][3] = 1.0;
    for (int from = 0; from < 3; ++from)
        matrix[from][(axis + 1 + from) % 3] = 1.0;
    return circle.init({}, new RQ_Transform(&matrix, 1));
}
}  // namespace

RQ_PolygonMeshHandle RQ_PrimCircle::makePolygonMesh(const RQ_RefineParms *parms, int axis)
{
    RQ_PrimCircle circle;
    return face(circle, axis) ? circle.refineToPolygonMesh(parms) : nullptr;
}

RQ_CurveMeshHandle RQ_PrimCircle::makeCurve(const RQ_RefineParms *parms, int axis)
{
    RQ_PrimCircle circle;
    return face(circle, axis) ? circle.refineToCurve(parms) : nullptr;
}

RQ_CurveMeshHandle RQ_PrimCircle::refineToCurve(const RQ_RefineParms *parms) const
{
    int nu, nv;
    RQ_Parametric range;
    if (!chooseSamples(parms, nu, nv, range))
        return nullptr;
    const bool closed = rq::isWholeTurn(range.umin, range.umax);
    const int vertices = closed ? nu - 1 : nu;
    const RQ_AttributeListHandle rim = sweepGrid(nu, 1, range, RQ_STORAGE_REAL32, RQ_STORAGE_INVALID)
                                           ->createUV(nu, 1, range.umin, range.umax, range.vmax, range.vmax);
    return new RQ_PrimCurveMesh(RQ_BASIS_LINEAR, new RQ_DAConstantValue<int32_t>(1, vertices),
                                rim->createSubArray(0, vertices), {}, getAttributes(), closed);
}

void RQ_PrimCircle::computeCircleBounds(BAS_BoundingBox &box, const BAS_Mat4d &matrix)
{
    BAS_Vec3f low, high;
    for (int c = 0; c < 3; ++c)
    {
        const double radius = BAS_Vec2d(matrix[0][c], matrix[1][c]).length();
        low[c] = float(matrix[3][c] - radius);
        high[c] = float(matrix[3][c] + radius);
    }
    box.enlarge(BAS_BoundingBox(low, high));
}

const char *RQ_PrimCircle::className() const { return "RQ_PrimCircle"; }
int RQ_PrimCircle::getPrimitiveType() const { return RQ_PRIM_CIRCLE; }
RQ_PrimitiveHandle RQ_PrimCircle::doSoftCopy() const { return new RQ_PrimCircle(*this); }
void RQ_PrimCircle::adjustTesselationCounts(int &, int &nv) const { nv = 2; }
RQ_PrimQuadric::Profile RQ_PrimCircle::profile(double v) const { return {{v, 0.0, 0.0}, {0.0, 0.0, 1.0}}; }

#include <rq/surface/PrimCircle.h>

#include <rq/prim/PrimitiveType.h>

namespace
{
/// Moves z to an axis and x and y to those that follow it.
RQ_TransformHandle facing(int axis)
{
    BAS_Mat4d matrix(0.0);
    matrix[3][3] = 1.0;
    for (int from = 0; from < 3; ++from)
        matrix[from][(axis + 1 + from) % 3] = 1.0;
    return new RQ_Transform(&matrix, 1);
}
}  // namespace

RQ_PolygonMeshHandle RQ_PrimCircle::makePolygonMesh(const RQ_RefineParms *parms, int axis)
{
    RQ_PrimCircle circle;
    return axis >= 0 && axis < 3 && circle.init({}, facing(axis)) ? circle.refineToPolygonMesh(parms) : nullptr;
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
bool RQ_PrimCircle::save(BAS_JSONWriter &writer) const { return saveQuadric(writer, RQprimitiveType(RQ_PRIM_CIRCLE)); }
RQ_PrimitiveHandle RQ_PrimCircle::doSoftCopy() const { return new RQ_PrimCircle(*this); }
void RQ_PrimCircle::adjustTesselationCounts(int &, int &nv) const { nv = 2; }
RQ_PrimQuadric::Profile RQ_PrimCircle::profile(double v) const { return {{v, 0.0, 0.0}, {0.0, 0.0, 1.0}}; }

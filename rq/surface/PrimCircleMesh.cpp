#include <rq/surface/PrimCircleMesh.h>

#include <rq/prim/PrimitiveType.h>
#include <rq/surface/PrimCircle.h>

const char *RQ_PrimCircleMesh::className() const { return "RQ_PrimCircleMesh"; }
int RQ_PrimCircleMesh::getPrimitiveType() const { return RQ_PRIM_CIRCLE_MESH; }
RQ_PrimitiveHandle RQ_PrimCircleMesh::doSoftCopy() const { return new RQ_PrimCircleMesh(*this); }

RQ_QuadricHandle RQ_PrimCircleMesh::makeQuadric(int64_t quadric) const { return make<RQ_PrimCircle>(quadric); }

void RQ_PrimCircleMesh::enlargeByShape(BAS_BoundingBox &box, const BAS_Mat4d &matrix) const
{
    RQ_PrimCircle::computeCircleBounds(box, matrix);
}

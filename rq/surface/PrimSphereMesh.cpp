#include <rq/surface/PrimSphereMesh.h>

#include <rq/prim/PrimitiveType.h>
#include <rq/surface/PrimSphere.h>

const char *RQ_PrimSphereMesh::className() const { return "RQ_PrimSphereMesh"; }
int RQ_PrimSphereMesh::getPrimitiveType() const { return RQ_PRIM_SPHERE_MESH; }
RQ_PrimitiveHandle RQ_PrimSphereMesh::doSoftCopy() const { return new RQ_PrimSphereMesh(*this); }

RQ_QuadricHandle RQ_PrimSphereMesh::makeQuadric(int64_t quadric) const { return make<RQ_PrimSphere>(quadric); }

void RQ_PrimSphereMesh::enlargeByShape(BAS_BoundingBox &box, const BAS_Mat4d &matrix) const
{
    RQ_PrimSphere::computeSphereBounds(box, matrix);
}

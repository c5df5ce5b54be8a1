#include <rq/surface/PrimTetMesh.h>

#include <rq/prim/PrimitiveType.h>
#include <rq/surface/detail/outerFaces.h>

const char *RQ_PrimTetMesh::className() const { return "RQ_PrimTetMesh"; }
int RQ_PrimTetMesh::getPrimitiveType() const { return RQ_PRIM_TET_MESH; }
RQ_PrimitiveHandle RQ_PrimTetMesh::doSoftCopy() const { return new RQ_PrimTetMesh(*this); }

const rq::CellKind &RQ_PrimTetMesh::kind() const { return rq::kTetrahedra; }

#include <rq/surface/PrimHexMesh.h>

#include <rq/prim/PrimitiveType.h>
#include <rq/surface/detail/outerFaces.h>

const char *RQ_PrimHexMesh::className() const { return "RQ_PrimHexMesh"; }
int RQ_PrimHexMesh::getPrimitiveType() const { return RQ_PRIM_HEX_MESH; }
RQ_PrimitiveHandle RQ_PrimHexMesh::doSoftCopy() const { return new RQ_PrimHexMesh(*this); }

const rq::CellKind &RQ_PrimHexMesh::kind() const { return rq::kHexahedra; }

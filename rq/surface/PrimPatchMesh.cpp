#include <rq/surface/PrimPatchMesh.h>

#include <rq/prim/PrimitiveType.h>

RQ_PrimPatchMesh::RQ_PrimPatchMesh() = default;
RQ_PrimPatchMesh::RQ_PrimPatchMesh(const RQ_PrimPatchMesh &other) = default;
RQ_PrimPatchMesh::~RQ_PrimPatchMesh() = default;

const char *RQ_PrimPatchMesh::className() const { return "RQ_PrimPatchMesh"; }
int RQ_PrimPatchMesh::getPrimitiveType() const { return RQ_PRIM_PATCH_MESH; }
RQ_PrimitiveHandle RQ_PrimPatchMesh::doSoftCopy() const { return new RQ_PrimPatchMesh(*this); }

#include <rq/surface/PrimNURBSCurveMesh.h>

#include <rq/prim/PrimitiveType.h>

RQ_PrimNURBSCurveMesh::RQ_PrimNURBSCurveMesh() : RQ_PrimNURBSCurveMesh(RQ_DataArrayHandle(), {}) {}

RQ_PrimNURBSCurveMesh::RQ_PrimNURBSCurveMesh(const RQ_DataArrayHandle &counts, const RQ_AttributeListHandle &vertex,
                                             const RQ_AttributeListHandle &uniform, const RQ_AttributeListHandle &detail,
                                             bool wrap)
    : RQ_PrimCurveMesh(RQ_BASIS_BSPLINE, counts, vertex, uniform, detail, wrap)
{}

RQ_PrimNURBSCurveMesh::RQ_PrimNURBSCurveMesh(const RQ_PrimNURBSCurveMesh &other, const RQ_AttributeListHandle &vertex,
                                             const RQ_AttributeListHandle &uniform, const RQ_AttributeListHandle &detail)
    : RQ_PrimCurveMesh(other, vertex, uniform, detail)
{}

RQ_PrimNURBSCurveMesh::RQ_PrimNURBSCurveMesh(const RQ_PrimNURBSCurveMesh &other) = default;
RQ_PrimNURBSCurveMesh::~RQ_PrimNURBSCurveMesh() = default;

const char *RQ_PrimNURBSCurveMesh::className() const { return "RQ_PrimNURBSCurveMesh"; }
int RQ_PrimNURBSCurveMesh::getPrimitiveType() const { return RQ_PRIM_NURBS_CURVE_MESH; }

RQ_CurveMeshHandle RQ_PrimNURBSCurveMesh::clone(const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform,
                                                const RQ_AttributeListHandle &detail) const
{
    return new RQ_PrimNURBSCurveMesh(*this, vertex, uniform, detail);
}

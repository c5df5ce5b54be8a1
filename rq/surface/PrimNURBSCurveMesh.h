#pragma once

#include <rq/surface/PrimCurveMesh.h>

/// Many B-splines, with knots or without, and rational where vertices have weights: what host NURBS curves become.
///
/// It differs from an `RQ_PrimCurveMesh` of that basis by its class and type alone, so that a consumer that draws NURBS
/// itself knows them, and takes no other basis.  All operations that keep the basis keep the class.
class RQ_API RQ_PrimNURBSCurveMesh final : public RQ_PrimCurveMesh
{
public:
    RQ_PrimNURBSCurveMesh();

    /// Cubic curves with even knots, unless `setOrder` and `setKnots` say otherwise.  `counts` holds the vertices of each.
    explicit RQ_PrimNURBSCurveMesh(const RQ_DataArrayHandle &counts, const RQ_AttributeListHandle &vertex,
                                   const RQ_AttributeListHandle &uniform = {}, const RQ_AttributeListHandle &detail = {},
                                   bool wrap = false);

    /// The curves and state of `other` with other attributes.
    RQ_PrimNURBSCurveMesh(const RQ_PrimNURBSCurveMesh &other, const RQ_AttributeListHandle &vertex,
                          const RQ_AttributeListHandle &uniform, const RQ_AttributeListHandle &detail);
    RQ_PrimNURBSCurveMesh(const RQ_PrimNURBSCurveMesh &other);
    ~RQ_PrimNURBSCurveMesh() override;

    const char *className() const override;
    int getPrimitiveType() const override;

    using RQ_Primitive::clone;

protected:
    bool canHaveBasis(RQ_Basis basis) const override { return basis == RQ_BASIS_BSPLINE; }
    RQ_CurveMeshHandle clone(const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform,
                             const RQ_AttributeListHandle &detail) const override;
};

#pragma once

#include <rq/surface/PrimCellMesh.h>

/// Many tetrahedra.
///
/// Shape  the corners of each are four: a, b, c, d, with (b - a) x (c - a) . (d - a) positive
class RQ_API RQ_PrimTetMesh final : public RQ_PrimCellMesh
{
public:
    const char *className() const override;
    int getPrimitiveType() const override;
    RQ_PrimitiveHandle doSoftCopy() const override;

protected:
    const rq::CellKind &kind() const override;
};

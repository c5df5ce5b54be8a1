#pragma once

#include <rq/surface/PrimCellMesh.h>

/// Many hexahedra.
///
/// Shape  the corners of each are eight: 0 to 3 around the bottom, 4 to 7 above them, counter-clockwise seen from above the
/// top
class RQ_API RQ_PrimHexMesh final : public RQ_PrimCellMesh
{
public:
    const char *className() const override;
    int getPrimitiveType() const override;
    RQ_PrimitiveHandle doSoftCopy() const override;

protected:
    const rq::CellKind &kind() const override;
};

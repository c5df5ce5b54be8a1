#pragma once

#include <rq/bridge/MSHPrimCollectCell.h>

/// The hexahedra of one refinement.
class RQ_API RQ_MSHPrimCollectHexahedronData final : public RQ_MSHPrimCollectCellData
{
public:
    explicit RQ_MSHPrimCollectHexahedronData(const RQ_RefineParms *parms)
        : RQ_MSHPrimCollectCellData(ELM_PRIMITIVE_HEXAHEDRON, parms)
    {}
};

/// The collector of host hexahedra: all of a refinement become one `RQ_PrimHexMesh`.  See `RQ_MSHPrimCollectCell`.
class RQ_API RQ_MSHPrimCollectHexahedron final : public RQ_MSHPrimCollectCell
{
public:
    RQ_MSHPrimCollectData *beginCollecting(const RQ_MSHDetailListHandle &details,
                                           const RQ_RefineParms *parms) const override;
    RQ_PrimitiveHandle endCollecting(const RQ_MSHDetailListHandle &details, RQ_MSHPrimCollectData *data) const override;
};

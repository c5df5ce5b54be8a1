#pragma once

#include <rq/bridge/MSHPrimCollectCell.h>

/// The tetrahedra of one refinement.
class RQ_API RQ_MSHPrimCollectTetrahedronData final : public RQ_MSHPrimCollectCellData
{
public:
    explicit RQ_MSHPrimCollectTetrahedronData(const RQ_RefineParms *parms)
        : RQ_MSHPrimCollectCellData(ELM_PRIMITIVE_TETRAHEDRON, parms)
    {}
};

/// The collector of host tetrahedra: all of a refinement become one `RQ_PrimTetMesh`.  See `RQ_MSHPrimCollectCell`.
class RQ_API RQ_MSHPrimCollectTetrahedron final : public RQ_MSHPrimCollectCell
{
public:
    RQ_MSHPrimCollectData *beginCollecting(const RQ_MSHDetailListHandle &details,
                                           const RQ_RefineParms *parms) const override;
    RQ_PrimitiveHandle endCollecting(const RQ_MSHDetailListHandle &details, RQ_MSHPrimCollectData *data) const override;
};

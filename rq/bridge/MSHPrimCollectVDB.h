#pragma once

#include <rq/bridge/MSHPrimCollect.h>

/// The collector of host sparse volumes: each becomes an `RQ_PrimVDB` of its own, as it is met.
class RQ_API RQ_MSHPrimCollectVDB : public RQ_MSHPrimCollect
{
public:
    RQ_MSHPrimCollectData *beginCollecting(const RQ_MSHDetailListHandle &details,
                                           const RQ_RefineParms *parms) const override;
    RQ_PrimitiveHandle collect(const RQ_MSHDetailListHandle &details, const MSH_Primitive *const *primitives, int segments,
                               RQ_MSHPrimCollectData *data) const override;
    bool canMergeData() const override { return true; }
};

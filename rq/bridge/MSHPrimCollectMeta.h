#pragma once

#include <rq/bridge/MSHPrimCollect.h>

/// The metaballs of one refinement, and the options of it.
class RQ_API RQ_MSHPrimCollectMetaData : public RQ_MSHPrimCollectOffsets
{
public:
    explicit RQ_MSHPrimCollectMetaData(const RQ_RefineParms *parms) : parms_(parms) {}
    ~RQ_MSHPrimCollectMetaData() override;

    const RQ_RefineParms *getParms() const { return parms_; }

private:
    const RQ_RefineParms *parms_;  // of the refinement, which outlives the data
};

/// The collector of host metaballs, blobs and expressions alike: all of a refinement become one `RQ_MSHPrimMetaBall`.
class RQ_API RQ_MSHPrimCollectMeta : public RQ_MSHPrimCollect
{
public:
    RQ_MSHPrimCollectData *beginCollecting(const RQ_MSHDetailListHandle &details,
                                           const RQ_RefineParms *parms) const override;
    RQ_PrimitiveHandle collect(const RQ_MSHDetailListHandle &details, const MSH_Primitive *const *primitives, int segments,
                               RQ_MSHPrimCollectData *data) const override;
    RQ_PrimitiveHandle endCollecting(const RQ_MSHDetailListHandle &details, RQ_MSHPrimCollectData *data) const override;
    bool canMergeData() const override { return true; }
    void mergeData(RQ_MSHPrimCollectData *into, RQ_MSHPrimCollectData *from) const override;
};

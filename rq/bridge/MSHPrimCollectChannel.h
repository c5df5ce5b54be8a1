#pragma once

#include <rq/bridge/MSHPrimCollect.h>

/// The collector of host channels: each becomes a channel of its own, as it is met.
///
/// Vertex attributes are those of the keys' vertices, if there are any, and their points, read in place.  Uniform attributes
/// are the primitive's.  Channels with a vertex that lost its point are left out.
class RQ_API RQ_MSHPrimCollectChannel : public RQ_MSHPrimCollect
{
public:
    RQ_MSHPrimCollectData *beginCollecting(const RQ_MSHDetailListHandle &details,
                                           const RQ_RefineParms *parms) const override;
    RQ_PrimitiveHandle collect(const RQ_MSHDetailListHandle &details, const MSH_Primitive *const *primitives, int segments,
                               RQ_MSHPrimCollectData *data) const override;

    /// Nothing was gathered: null.
    RQ_PrimitiveHandle endCollecting(const RQ_MSHDetailListHandle &, RQ_MSHPrimCollectData *) const override { return {}; }
    bool canMergeData() const override { return true; }
};

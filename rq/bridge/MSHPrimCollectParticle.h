#pragma once

#include <rq/bridge/MSHPrimCollect.h>

/// The collector of host particle systems: each becomes a point mesh of its own, as it is met.
///
/// Point attributes are those of the particles' vertices and points, read in place; detail attributes are those of the
/// primitive and of the detail.  Particles without a point are lost with their system.
class RQ_API RQ_MSHPrimCollectParticle : public RQ_MSHPrimCollect
{
public:
    RQ_MSHPrimCollectData *beginCollecting(const RQ_MSHDetailListHandle &details,
                                           const RQ_RefineParms *parms) const override;

    /// Null for a system without particles.
    RQ_PrimitiveHandle collect(const RQ_MSHDetailListHandle &details, const MSH_Primitive *const *primitives, int segments,
                               RQ_MSHPrimCollectData *data) const override;
    bool canMergeData() const override { return true; }
};

#pragma once

#include <rq/bridge/MSHPrimCollect.h>

/// The collector of host circles, or of host spheres: all of a refinement become one mesh of quadrics.
///
/// The mesh's vertex attributes are those of the quadrics' vertices, points and of the primitives themselves, read in place;
/// position and matrix are its transforms.
class RQ_API RQ_MSHPrimCollectQuadric : public RQ_MSHPrimCollect
{
public:
    /// `type` is that of circles or of spheres.
    explicit RQ_MSHPrimCollectQuadric(ELM_PrimitiveTypeId type) : type_(type) {}

    RQ_MSHPrimCollectData *beginCollecting(const RQ_MSHDetailListHandle &details,
                                           const RQ_RefineParms *parms) const override;
    RQ_PrimitiveHandle collect(const RQ_MSHDetailListHandle &details, const MSH_Primitive *const *primitives, int segments,
                               RQ_MSHPrimCollectData *data) const override;
    RQ_PrimitiveHandle endCollecting(const RQ_MSHDetailListHandle &details, RQ_MSHPrimCollectData *data) const override;
    bool canMergeData() const override { return true; }
    void mergeData(RQ_MSHPrimCollectData *into, RQ_MSHPrimCollectData *from) const override;

private:
    ELM_PrimitiveTypeId type_;
};

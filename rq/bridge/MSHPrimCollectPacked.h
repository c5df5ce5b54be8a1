#pragma once

#include <rq/bridge/MSHPrimCollect.h>
#include <rq/bridge/MSHPrimCollectBoxes.h>

class MOD_PrimPacked;

/// What stands for packed primitives that a viewport shows as less than their geometry.
class RQ_API RQ_MSHPrimCollectPackedData : public RQ_MSHPrimCollectData
{
public:
    explicit RQ_MSHPrimCollectPackedData(const RQ_RefineParms *parms);
    ~RQ_MSHPrimCollectPackedData() override;

    /// Take a primitive whose own level is nothing, a centroid or a box, when the options ask for it.  False for others.
    bool take(const MOD_PrimPacked &packed);

    void append(const RQ_MSHPrimCollectPackedData &following) { boxes_.append(following.boxes_); }
    const RQ_MSHPrimCollectBoxes &getBoxes() const { return boxes_; }

private:
    bool usesOwnLevel_;
    RQ_MSHPrimCollectBoxes boxes_;
};

/// The collector of packed primitives: an `RQ_MSHPrimPacked` for each.  With "viewport:packed_lod", those whose own level is
/// a box or a centroid become one primitive together, and those whose level is nothing are left out.
class RQ_API RQ_MSHPrimCollectPacked : public RQ_MSHPrimCollect
{
public:
    RQ_MSHPrimCollectData *beginCollecting(const RQ_MSHDetailListHandle &details,
                                           const RQ_RefineParms *parms) const override;
    RQ_PrimitiveHandle collect(const RQ_MSHDetailListHandle &details, const MSH_Primitive *const *primitives, int segments,
                               RQ_MSHPrimCollectData *data) const override;
    RQ_PrimitiveHandle endCollecting(const RQ_MSHDetailListHandle &details, RQ_MSHPrimCollectData *data) const override;
    bool canMergeData() const override { return true; }
    void mergeData(RQ_MSHPrimCollectData *into, RQ_MSHPrimCollectData *from) const override;

protected:
    /// What becomes of a primitive that is no box.
    virtual RQ_PrimitiveHandle makePrimitive(const RQ_MSHDetailListHandle &details, const MOD_PrimPacked &packed,
                                             RQ_MSHPrimCollectData *data) const;
};

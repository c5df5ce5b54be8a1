#pragma once

#include <host/msh/Quadric.h>
#include <rq/bridge/KindGroups.h>
#include <rq/bridge/MSHPrimCollect.h>

/// The tubes of one refinement, by what all tubes of a mesh have in common.
class RQ_API RQ_MSHPrimCollectTubeData : public RQ_MSHPrimCollectData
{
public:
    struct Kind
    {
        double taper;
        bool caps;

        auto operator<=>(const Kind &other) const = default;
    };
    using Groups = RQ_KindGroups<Kind>;

    explicit RQ_MSHPrimCollectTubeData(const RQ_RefineParms *parms) : parms_(parms) {}
    ~RQ_MSHPrimCollectTubeData() override;

    void append(const MSH_Quadric &tube) { groups_.append({tube.taper(), tube.hasCaps()}, tube.offset()); }

    /// Append what other data gathered.
    void append(const RQ_MSHPrimCollectTubeData &following) { groups_.concat(following.groups_); }

    const Groups &getGroups() const { return groups_; }
    const RQ_RefineParms *getParms() const { return parms_; }

private:
    const RQ_RefineParms *parms_;  // of the refinement, which outlives the data
    Groups groups_;
};

/// The collector of host tubes: those of one taper, with or without caps, become one mesh of tubes; several meshes come in a
/// collection.  See `RQ_MSHPrimCollectQuadric`.
class RQ_API RQ_MSHPrimCollectTube : public RQ_MSHPrimCollect
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

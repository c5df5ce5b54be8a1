#pragma once

#include <rq/bridge/MSHPrimCollect.h>

/// The grids of one refinement, and its options.
class RQ_API RQ_MSHPrimCollectHullData : public RQ_MSHPrimCollectOffsets
{
public:
    explicit RQ_MSHPrimCollectHullData(const RQ_RefineParms *parms) : parms_(parms) {}
    ~RQ_MSHPrimCollectHullData() override;

    /// Append one grid, unless it has a vertex without a point.
    void append(const MSH_Primitive &grid) override;
    using RQ_MSHPrimCollectOffsets::append;

    const RQ_RefineParms *getParms() const { return parms_; }

private:
    const RQ_RefineParms *parms_;  // of the refinement, which outlives the data
};

/// A collector of host grids as nets of flat patches, for those who want them whole: grids come as polygons unless an
/// application binds it.
///
///     RQ_MSHPrimCollect::bind(std::make_shared<RQ_MSHPrimCollectHull>(), ELM_PRIMITIVE_GRID);
///
/// A grid of one cell becomes a patch, any other a mesh of patches; several come in a collection.  Vertex attributes are
/// those of vertices and their points, read in place.  Grids without a cell are left out.
class RQ_API RQ_MSHPrimCollectHull : public RQ_MSHPrimCollect
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

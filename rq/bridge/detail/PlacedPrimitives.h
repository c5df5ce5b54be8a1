#pragma once

#include <rq/bridge/MSHPrimCollect.h>
#include <rq/prim/TransformArray.h>

namespace rq
{
/// The offsets of host primitives that have one vertex and a matrix each, and the options they are refined with.
class PlacedOffsets : public RQ_MSHPrimCollectOffsets
{
public:
    explicit PlacedOffsets(const RQ_RefineParms *parms) : parms_(parms) {}

    const RQ_RefineParms *parms() const { return parms_; }

private:
    const RQ_RefineParms *parms_;  // of the refinement, which outlives the data
};

/// Where the primitives are, in every segment: their matrix first, then the position of their point.
///
/// Carries a data id that changes with the matrices, the points and the choice of primitives.
RQ_TransformArrayHandle placementsOf(const RQ_MSHDetailList &details, const RQ_MSHOffsetList &primitives);

/// One entry per primitive: the attributes of its vertex, of that one's point and then of the primitive itself, but for
/// those that are its placement.
RQ_AttributeListHandle attributesOfPlaced(const RQ_MSHDetailList &details, const RQ_MSHOffsetList &primitives,
                                          const RQ_RefineParms *parms);
}  // namespace rq

#pragma once

#include <rq/bridge/MSHDetailList.h>
#include <rq/prim/TransformArray.h>

namespace rq
{
// From the space of packed geometry to the detail's, in every segment: back by the pivot, then as the primitive is placed.

BAS_Mat4d packedPlacement(const RQ_MSHDetailList &details, ELM_Offset primitive, int segment);

/// Of many.  The array has a data id where none has a pivot.
RQ_TransformArrayHandle packedPlacementsOf(const RQ_MSHDetailList &details, const RQ_MSHOffsetList &primitives);
}  // namespace rq

#pragma once

#include <rq/bridge/MSHDetailList.h>
#include <rq/prim/Primitive.h>

namespace rq
{
/// A point mesh of some points of the details, with their attributes and those of the detail.
RQ_PrimitiveHandle makePointMesh(const RQ_MSHDetailList &details, const RQ_MSHOffsetList &points,
                                 const RQ_RefineParms *parms);
}  // namespace rq

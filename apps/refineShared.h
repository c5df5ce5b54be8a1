#pragma once

#include <vector>

#include <rq/prim/Primitive.h>

namespace rq::app
{
/// What a primitive refines to.  Packed geometry that occurs more than once becomes instances of one (see
/// `RQgatherInstances`).  `isRefined`, if given, tells whether the primitive can be refined at all.
std::vector<RQ_PrimitiveHandle> refineShared(const RQ_Primitive &primitive, const RQ_RefineParms *parms,
                                             bool *isRefined = nullptr);
}  // namespace rq::app

#pragma once

#include <rq/prim/Primitive.h>
#include <rq/prim/RefineParms.h>

namespace rq::viewport
{
/// Whether two sets of options agree in all but the level of detail: then only primitives that change with it need another
/// refinement.  True for equal ones, too.
bool differInLevelOnly(const RQ_RefineParms &a, const RQ_RefineParms &b);

/// Whether a primitive refines to something else under another level of detail.
bool changesWithLevel(const RQ_Primitive &primitive);
}  // namespace rq::viewport

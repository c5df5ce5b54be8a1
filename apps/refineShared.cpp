#include <apps/refineShared.h>

#include <rq/bridge/MSHPrimPacked.h>
#include <rq/prim/RefineList.h>

namespace rq::app
{
std::vector<RQ_PrimitiveHandle> refineShared(const RQ_Primitive &primitive, const RQ_RefineParms *parms, bool *isRefined)
{
    RQ_RefineList list;
    const bool refines = list.refine(&primitive, parms);
    if (isRefined)
        *isRefined = refines;
    std::vector<RQ_PrimitiveHandle> primitives;
    for (int i = 0; i < list.entries(); ++i)
        primitives.push_back(list.getPrimitive(i));
    return RQgatherInstances(primitives);
}
}  // namespace rq::app

#include <rq/bridge/MSHPrimCollectTriBez.h>

#include <host/msh/Patch3.h>
#include <rq/bridge/detail/RunOptions.h>
#include <rq/bridge/detail/NetLists.h>
#include <rq/surface/PrimTriBez.h>

RQ_MSHPrimCollectData *RQ_MSHPrimCollectTriBez::beginCollecting(const RQ_MSHDetailListHandle &,
                                                                const RQ_RefineParms *parms) const
{
    return new rq::RunOptions(parms);
}

RQ_PrimitiveHandle RQ_MSHPrimCollectTriBez::collect(const RQ_MSHDetailListHandle &details,
                                                    const MSH_Primitive *const *primitives, int,
                                                    RQ_MSHPrimCollectData *data) const
{
    const MSH_Patch3 patch(*primitives[0]);
    const rq::NetLists lists(*details, patch, rq::RunOptions::of(data));
    const BAS_IntrusivePtr<RQ_PrimTriBez> made(new RQ_PrimTriBez);
    const bool fits = lists.areWhole && made->init(int(patch.degree()), lists.vertex, lists.uniform, lists.detail);
    return fits ? made : nullptr;
}

#include <rq/bridge/MSHPrimCollectTPSurf.h>

#include <rq/bridge/MSHPrimTPSurf.h>
#include <rq/bridge/detail/RunOptions.h>
#include <rq/bridge/detail/NetLists.h>

RQ_MSHPrimCollectData *RQ_MSHPrimCollectTPSurf::beginCollecting(const RQ_MSHDetailListHandle &,
                                                                const RQ_RefineParms *parms) const
{
    return new rq::RunOptions(parms);
}

RQ_PrimitiveHandle RQ_MSHPrimCollectTPSurf::collect(const RQ_MSHDetailListHandle &details,
                                                    const MSH_Primitive *const *primitives, int,
                                                    RQ_MSHPrimCollectData *data) const
{
    const MSH_Surface surface(*primitives[0]);
    const rq::NetLists lists(*details, surface, rq::RunOptions::of(data), surface.isRational());
    const BAS_IntrusivePtr<RQ_MSHPrimTPSurf> made(new RQ_MSHPrimTPSurf);
    const bool fits = lists.areWhole && made->init(surface, lists.vertex, lists.uniform, lists.detail);
    return fits ? made : nullptr;
}

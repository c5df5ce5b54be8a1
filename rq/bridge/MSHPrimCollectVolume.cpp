#include <rq/bridge/MSHPrimCollectVolume.h>

#include <rq/bridge/PrimVolume.h>
#include <rq/bridge/detail/RunOptions.h>

RQ_MSHPrimCollectData *RQ_MSHPrimCollectVolume::beginCollecting(const RQ_MSHDetailListHandle &,
                                                                const RQ_RefineParms *parms) const
{
    return new rq::RunOptions(parms);
}

RQ_PrimitiveHandle RQ_MSHPrimCollectVolume::collect(const RQ_MSHDetailListHandle &details,
                                                    const MSH_Primitive *const *primitives, int,
                                                    RQ_MSHPrimCollectData *data) const
{
    return new RQ_PrimVolume(*details, primitives[0]->offset(), rq::RunOptions::of(data));
}

#include <rq/bridge/MSHPrimCollectVDB.h>

#include <rq/bridge/PrimVDB.h>
#include <rq/bridge/detail/RunOptions.h>

RQ_MSHPrimCollectData *RQ_MSHPrimCollectVDB::beginCollecting(const RQ_MSHDetailListHandle &,
                                                             const RQ_RefineParms *parms) const
{
    return new rq::RunOptions(parms);
}

RQ_PrimitiveHandle RQ_MSHPrimCollectVDB::collect(const RQ_MSHDetailListHandle &details,
                                                 const MSH_Primitive *const *primitives, int,
                                                 RQ_MSHPrimCollectData *data) const
{
    return new RQ_PrimVDB(*details, primitives[0]->offset(), rq::RunOptions::of(data));
}

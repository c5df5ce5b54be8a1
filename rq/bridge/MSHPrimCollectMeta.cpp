#include <rq/bridge/MSHPrimCollectMeta.h>

#include <rq/bridge/MSHPrimMetaBall.h>

RQ_MSHPrimCollectMetaData::~RQ_MSHPrimCollectMetaData() = default;

RQ_MSHPrimCollectData *RQ_MSHPrimCollectMeta::beginCollecting(const RQ_MSHDetailListHandle &,
                                                              const RQ_RefineParms *parms) const
{
    return new RQ_MSHPrimCollectMetaData(parms);
}

RQ_PrimitiveHandle RQ_MSHPrimCollectMeta::collect(const RQ_MSHDetailListHandle &, const MSH_Primitive *const *primitives,
                                                  int, RQ_MSHPrimCollectData *data) const
{
    static_cast<RQ_MSHPrimCollectMetaData *>(data)->append(*primitives[0]);
    return nullptr;
}

void RQ_MSHPrimCollectMeta::mergeData(RQ_MSHPrimCollectData *into, RQ_MSHPrimCollectData *from) const
{
    static_cast<RQ_MSHPrimCollectMetaData *>(into)->append(*static_cast<const RQ_MSHPrimCollectMetaData *>(from));
}

RQ_PrimitiveHandle RQ_MSHPrimCollectMeta::endCollecting(const RQ_MSHDetailListHandle &details,
                                                        RQ_MSHPrimCollectData *data) const
{
    const auto &gathered = static_cast<const RQ_MSHPrimCollectMetaData &>(*data);
    if (gathered.getPrimitives().entries() == 0)
        return nullptr;
    return new RQ_MSHPrimMetaBall(*details, gathered.getPrimitives(), gathered.getParms());
}

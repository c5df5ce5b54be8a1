#include <rq/bridge/MSHPrimCollectChannel.h>

#include <host/msh/Channel.h>
#include <rq/bridge/detail/RunOptions.h>
#include <rq/bridge/detail/NetLists.h>
#include <rq/surface/PrimChannel.h>

RQ_MSHPrimCollectData *RQ_MSHPrimCollectChannel::beginCollecting(const RQ_MSHDetailListHandle &,
                                                                 const RQ_RefineParms *parms) const
{
    return new rq::RunOptions(parms);
}

RQ_PrimitiveHandle RQ_MSHPrimCollectChannel::collect(const RQ_MSHDetailListHandle &details,
                                                     const MSH_Primitive *const *primitives, int,
                                                     RQ_MSHPrimCollectData *data) const
{
    static_assert(int(RQ_ChannelKeys::CUBIC) == int(MSH_CHANNEL_CUBIC));
    const MSH_Channel channel(*primitives[0]);
    const rq::NetLists lists(*details, channel, rq::RunOptions::of(data));
    const MSH_ChannelData &keys = channel.data();
    const BAS_IntrusivePtr<RQ_PrimChannel> made(new RQ_PrimChannel);
    const bool fits =
        lists.areWhole && made->init({keys.times, keys.values, keys.slopesBefore, keys.slopesBehind, keys.segments},
                                     channel.vertexCount() > 0 ? lists.vertex : nullptr, lists.uniform, lists.detail);
    return fits ? made : nullptr;
}

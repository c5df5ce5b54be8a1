#include <rq/bridge/detail/DetailWalk.h>

#include <host/msh/Detail.h>
#include <rq/bridge/detail/LoosePoints.h>
#include <rq/bridge/detail/SlotCollecting.h>
#include <rq/bridge/detail/selectPrimitives.h>

namespace
{
void append(std::vector<RQ_PrimitiveHandle> &to, const std::vector<RQ_PrimitiveHandle> &from)
{
    to.insert(to.end(), from.begin(), from.end());
}
}  // namespace

rq::DetailWalk::DetailWalk(const RQ_MSHDetailListHandle &details, const ELM_Range *range, const RQ_RefineParms *parms)
    : details_(details), detail_(*details->getDetail()), range_(range), parms_(parms),
      hidden_(!parms || parms->getSkipHidden() ? detail_.hidden() : nullptr)
{
    BAS_WorkBuffer buffer;
    if (const char *group = RQ_RefineParms::getGeoRefineGroup(parms, buffer))
        refined_ = detail_.group(ELM_OWNER_PRIMITIVE, group);
}

std::vector<RQ_PrimitiveHandle> rq::DetailWalk::run()
{
    std::vector<RQ_PrimitiveHandle> result;
    if (wantsAllAsPoints())
    {
        makePointMeshes(*details_, RQ_MSHOffsetList(detail_, ELM_OWNER_POINT), parms_, result);
        return result;
    }
    BAS_Progress progress("Refining geometry");
    SlotCollecting slots(details_, parms_);
    slots.collect(primitives(), progress);
    append(result, slots.takeEmitted());
    if (wantsLoosePoints())
        makeLoosePointMeshes(*details_, parms_, progress, result);
    if (!progress.isInterrupted())
        append(result, slots.takeGathered());
    if (progress.isInterrupted() || slots.isInterrupted())
        result.clear();
    return result;
}

bool rq::DetailWalk::wantsAllAsPoints() const
{
    if (RQ_RefineParms::getGeoPointMesh(parms_))
        return true;
    const bool instances = parms_ && parms_->getPointInstanceEnable() && detail_.instanceFile();
    return detail_.primitiveCount() == 0 && !range_ && !refined_ &&
           (instances || RQ_RefineParms::getShowUnusedPoints(parms_));
}

bool rq::DetailWalk::wantsLoosePoints() const
{
    return !range_ && !refined_ && RQ_RefineParms::getShowUnusedPoints(parms_) && detail_.topologyIsValid();
}

ELM_Range rq::DetailWalk::primitives() const
{
    return selectPrimitives(range_ ? *range_ : detail_.range(ELM_OWNER_PRIMITIVE), refined_, hidden_);
}

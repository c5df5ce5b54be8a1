#include <rq/bridge/detail/DetailWalk.h>

#include <algorithm>

#include <host/elm/PrimitiveFactory.h>
#include <host/msh/Detail.h>
#include <rq/bridge/MSHPrimCollectPoly.h>
#include <rq/bridge/MSHPrimitive.h>
#include <rq/bridge/detail/makePoints.h>
#include <rq/data/DAIndexedText.h>
#include <rq/surface/PrimPointMesh.h>

RQ_PrimitiveHandle rq::makePointMesh(const RQ_MSHDetailList &details, const RQ_MSHOffsetList &points,
                                     const RQ_RefineParms *parms)
{
    return new RQ_PrimPointMesh(details.getPointAttributes(nullptr, points, parms),
                                details.getDetailAttributes(nullptr, parms));
}

rq::DetailWalk::DetailWalk(const RQ_MSHDetailListHandle &details, const ELM_Range *range,
                           const RQ_TransformHandle &transform, RQ_Refine &sink, const RQ_RefineParms *parms)
    : details_(details), detail_(*details->getDetail()), range_(range), transform_(transform), sink_(sink), parms_(parms),
      hidden_(!parms || parms->getSkipHidden() ? detail_.hidden() : nullptr),
      instances_(parms && parms->getPointInstanceEnable() && detail_.instanceFile())
{
    BAS_WorkBuffer buffer;
    if (const char *group = RQ_RefineParms::getGeoRefineGroup(parms, buffer))
        refined_ = detail_.group(ELM_OWNER_PRIMITIVE, group);
}

void rq::DetailWalk::run()
{
    if (wantsAllAsPoints())
        return emitPoints(RQ_MSHOffsetList(detail_, ELM_OWNER_POINT), BAS_StringHolder());
    if (fitsBatch())
        collectBatch();
    else
        collectEach();
    emitLoosePoints();
    finishSlots();
}

bool rq::DetailWalk::wantsAllAsPoints() const
{
    if (RQ_RefineParms::getGeoPointMesh(parms_))
        return true;
    // With instance files the points are told apart by file below.
    return detail_.primitiveCount() == 0 && !instances_ && !range_ && !refined_ &&
           RQ_RefineParms::getShowUnusedPoints(parms_);
}

bool rq::DetailWalk::fitsBatch() const
{
    const auto collector = RQ_MSHPrimCollect::getCollector(ELM_PRIMITIVE_POLYGON);
    return !hidden_ && !refined_ && detail_.primitiveCount(ELM_PRIMITIVE_POLYGON) == detail_.primitiveCount() &&
           dynamic_cast<const RQ_MSHPrimCollectPoly *>(collector.get());
}

void rq::DetailWalk::collectBatch()
{
    const Slot &slot = *slotOf(ELM_PRIMITIVE_POLYGON);
    static_cast<const RQ_MSHPrimCollectPoly &>(*slot.collector)
        .collectAll(slot.data.get(), detail_, range_ ? *range_ : detail_.range(ELM_OWNER_PRIMITIVE), nullptr);
}

void rq::DetailWalk::collectEach()
{
    const ELM_Range range = range_ ? *range_ : detail_.range(ELM_OWNER_PRIMITIVE);
    for (const auto [begin, end] : range.blocks())
        for (ELM_Offset primitive = begin; primitive < end; ++primitive)
            if (!(hidden_ && hidden_->contains(primitive)) && !(refined_ && !refined_->contains(primitive)))
                collectOne(primitive);
}

void rq::DetailWalk::collectOne(ELM_Offset primitive)
{
    const ELM_PrimitiveTypeId type = detail_.typeOf(primitive);
    if (type == ELM_PRIMITIVE_NONE)
        return;
    const Slot *slot = slotOf(type);
    if (!slot)
        return emit(new RQ_MSHPrimitive(details_, primitive, parms_));

    std::vector<MSH_Primitive> views;
    std::vector<const MSH_Primitive *> pointers;
    views.reserve(size_t(details_->getSegments()));
    for (int segment = 0; segment < details_->getSegments(); ++segment)
        pointers.push_back(&views.emplace_back(*details_->getDetail(segment), primitive));
    emit(slot->collector->collect(details_, pointers.data(), details_->getSegments(), slot->data.get()));
}

rq::DetailWalk::Slot *rq::DetailWalk::slotOf(ELM_PrimitiveTypeId type)
{
    const auto [known, isNew] = slotOfType_.try_emplace(type, -1);
    if (!isNew)
        return known->second >= 0 ? &slots_[size_t(known->second)] : nullptr;

    const auto collector = RQ_MSHPrimCollect::getCollector(type);
    if (!collector)
        return nullptr;
    const auto same = [&](const Slot &slot) { return slot.collector == collector; };
    auto slot = std::find_if(slots_.begin(), slots_.end(), same);
    if (slot == slots_.end())
    {
        std::unique_ptr<RQ_MSHPrimCollectData> data(collector->beginCollecting(details_, parms_));
        slot = slots_.insert(slot, Slot{collector, std::move(data), type});
    }
    slot->lowestType = std::min(slot->lowestType, type);
    known->second = int(slot - slots_.begin());
    return &*slot;
}

void rq::DetailWalk::emitLoosePoints()
{
    if (range_ || refined_ || !RQ_RefineParms::getShowUnusedPoints(parms_) || !detail_.topologyIsValid())
        return;
    const bool all = RQ_RefineParms::getShowAllPoints(parms_);
    if (!all && !detail_.hasUnusedPoints())
        return;

    const BAS_BitArray &used = detail_.usedPoints();
    const ELM_StringTuple *files = instances_ && !all ? detail_.instanceFile()->strings() : nullptr;
    RQ_MSHOffsetList loose;
    std::vector<std::pair<int32_t, RQ_MSHOffsetList>> byFile;  // in order of first point
    for (ELM_Offset point = 0; point < detail_.capacity(ELM_OWNER_POINT); ++point)
    {
        if (!all && used.get(point))
            continue;
        if (!files || files->get(point).isEmpty())
        {
            loose.append(point);
            continue;
        }
        const int32_t file = files->index(point);
        auto list = std::find_if(byFile.begin(), byFile.end(), [file](const auto &entry) { return entry.first == file; });
        if (list == byFile.end())
            list = byFile.insert(list, {file, RQ_MSHOffsetList()});
        list->second.append(point);
    }
    emitPoints(loose, BAS_StringHolder());
    for (const auto &[file, points] : byFile)
        emitPoints(points, files->table()[size_t(file)]);
}

void rq::DetailWalk::emitPoints(const RQ_MSHOffsetList &points, const BAS_StringHolder &instanceFile)
{
    const int64_t limit = RQ_RefineParms::getMaxPointMeshSize(parms_);
    const int64_t piece = limit > 0 ? limit : std::max<int64_t>(1, points.entries());
    for (int64_t first = 0; first < points.entries(); first += piece)
    {
        const int64_t count = std::min(piece, points.entries() - first);
        const RQ_MSHOffsetList part = count == points.entries() ? points : RQ_MSHOffsetList(points, first, count);
        RQ_PrimitiveHandle mesh = makePointMesh(*details_, part, parms_);
        if (instanceFile)
        {
            const RQ_AttributeListHandle &detail = mesh->getDetailAttributes();
            const RQ_AttributeListHandle base = detail ? detail : new RQ_AttributeList(new RQ_AttributeMap, 1);
            mesh = new RQ_PrimPointMesh(
                mesh->getPointAttributes(),
                base->addAttribute(ELM_INSTANCE_FILE_NAME, RQ_DAIndexedString::createIndexed(&instanceFile, 1, 1), true));
        }
        emit(mesh);
    }
}

void rq::DetailWalk::finishSlots()
{
    std::vector<const Slot *> order;
    for (const Slot &slot : slots_)
        order.push_back(&slot);
    std::sort(order.begin(), order.end(), [](const Slot *a, const Slot *b) { return a->lowestType < b->lowestType; });
    for (const Slot *slot : order)
        emit(slot->collector->endCollecting(details_, slot->data.get()));
}

void rq::DetailWalk::emit(const RQ_PrimitiveHandle &primitive)
{
    if (primitive)
        sink_.addPrimitive(primitive->copyTransformed(transform_));
}

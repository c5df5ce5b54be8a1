#include <rq/bridge/detail/SlotCollecting.h>

#include <algorithm>

#include <host/msh/Detail.h>
#include <rq/bridge/MSHPrimitive.h>
#include <rq/bridge/detail/ManyFaces.h>
#include <rq/bridge/detail/builtInCollectors.h>
#include <rq/bridge/detail/parallelWalk.h>

namespace
{
// A primitive costs 5 ns when it is only noted, and a thousand when it is wrapped.
constexpr int64_t kPrimitivesPerPiece = 2 * ELM_PAGE_SIZE;
}  // namespace

struct rq::SlotCollecting::Piece
{
    struct Part
    {
        bool begun = false;
        std::unique_ptr<RQ_MSHPrimCollectData> data = nullptr;
    };
    std::vector<Part> parts;  // one a slot
    std::vector<Emitted> emitted;
};

rq::SlotCollecting::SlotCollecting(const RQ_MSHDetailListHandle &details, const RQ_RefineParms *parms)
    : details_(details), detail_(*details->getDetail()), parms_(parms), slotOfType_(detail_.data().typeCounts.size(), -1)
{
    for (size_t type = ELM_PRIMITIVE_NONE + 1; type < slotOfType_.size(); ++type)
    {
        if (detail_.primitiveCount(ELM_PrimitiveTypeId(type)) == 0)
            continue;
        const auto collector = RQ_MSHPrimCollect::getCollector(ELM_PrimitiveTypeId(type));
        wraps_ = wraps_ || !collector;
        if (!collector)
            continue;
        const auto same = [&](const Slot &slot) { return slot.collector == collector; };
        const auto known = std::find_if(slots_.begin(), slots_.end(), same);
        slotOfType_[type] = int(known - slots_.begin());
        if (known == slots_.end())
            slots_.push_back({collector, gathersBatches(*collector), collector->canMergeData()});
    }

    // The batch of polygons takes the primitives of all types that it knows, so none of them may be another collector's.
    const auto isTaken = [&](ELM_PrimitiveTypeId type) {
        return detail_.primitiveCount(type) > 0 && (!slotOf(type) || slotOf(type)->collector != builtInPolygonCollector());
    };
    if (std::any_of(rq::kTypesOfFaces.begin(), rq::kTypesOfFaces.end(), isTaken))
        for (Slot &slot : slots_)
            slot.inBatch = slot.inBatch && slot.collector != builtInPolygonCollector();
}

void rq::SlotCollecting::collect(const ELM_Range &range, BAS_Progress &progress)
{
    collectBatch(range, progress);
    if (!walksInParallel(detail_))
        return collectPieces(range, Share::ALL, progress);
    collectPieces(range, Share::MERGING, progress);
    collectPieces(range, Share::OTHERS, progress);
    std::stable_sort(emitted_.begin(), emitted_.end(),
                     [](const Emitted &a, const Emitted &b) { return a.offset < b.offset; });
}

void rq::SlotCollecting::collectBatch(const ELM_Range &range, BAS_Progress &progress)
{
    for (Slot &slot : slots_)
        if (slot.inBatch)
        {
            slot.data.reset(slot.collector->beginCollecting(details_, parms_));
            slot.begun = true;
            static_cast<BatchData &>(*slot.data).append(detail_, range, progress);
        }
}

bool rq::SlotCollecting::belongs(const Slot *slot, Share share) const
{
    if (slot && slot->inBatch)
        return false;
    return share == Share::ALL || (share == Share::MERGING) == (!slot || slot->merges);
}

bool rq::SlotCollecting::needs(Share share) const
{
    return (wraps_ && belongs(nullptr, share)) ||
           std::any_of(slots_.begin(), slots_.end(), [&](const Slot &slot) { return belongs(&slot, share); });
}

void rq::SlotCollecting::collectPieces(const ELM_Range &range, Share share, BAS_Progress &progress)
{
    if (!needs(share))
        return;
    const bool whole = share != Share::MERGING;
    const PieceWalk walk(detail_, range, whole ? std::max<int64_t>(1, range.end()) : kPrimitivesPerPiece);
    std::vector<Piece> pieces(size_t(walk.pieces()));
    walk.run(progress, [&](int64_t index, const ELM_Range &part) {
        Piece &piece = pieces[size_t(index)];
        piece.parts.resize(slots_.size());
        collectPiece(part, share, piece, progress);
    });
    if (!progress.isInterrupted())
        for (Piece &piece : pieces)
            merge(piece);
}

bool rq::SlotCollecting::skipsPage(ELM_Offset primitive, Share share) const
{
    const ELM_PageArray<int16_t> &types = detail_.data().type;
    if (!types.isConstantPage(primitive >> ELM_PAGE_BITS))
        return false;
    const int16_t type = types.value(primitive);
    return type == ELM_PRIMITIVE_NONE || !belongs(slotOf(type), share);
}

void rq::SlotCollecting::collectPiece(const ELM_Range &range, Share share, Piece &piece, BAS_Progress &progress) const
{
    const ELM_ReadHandle<int16_t> types = detail_.data().type.reader();
    std::vector<MSH_Primitive> views;  // of one primitive, one a segment
    for (int segment = 0; segment < details_->getSegments(); ++segment)
        views.emplace_back(*details_->getDetail(segment), 0);
    std::vector<const MSH_Primitive *> pointers;
    for (const MSH_Primitive &view : views)
        pointers.push_back(&view);
    const auto collect = [&](ELM_Offset primitive, const Slot &slot) {
        Piece::Part &part = piece.parts[size_t(&slot - slots_.data())];
        if (!part.begun)
            part = {true, std::unique_ptr<RQ_MSHPrimCollectData>(slot.collector->beginCollecting(details_, parms_))};
        for (MSH_Primitive &view : views)
            view = MSH_Primitive(view.detail(), primitive);
        return slot.collector->collect(details_, pointers.data(), int(views.size()), part.data.get());
    };
    // Most primitives are of the type of the one before.
    ELM_PrimitiveTypeId type = ELM_PRIMITIVE_NONE;
    const Slot *slot = nullptr;
    bool isWanted = false;
    for (const auto [begin, end] : range.blocks())
    {
        if (progress.interrupted(double(begin) / double(range.end())))
            return;
        for (ELM_Offset primitive = begin, last = skipsPage(begin, share) ? begin : end; primitive < last; ++primitive)
        {
            if (types.value(primitive) != type)
            {
                type = types.value(primitive);
                slot = slotOf(type);
                isWanted = type != ELM_PRIMITIVE_NONE && belongs(slot, share);
            }
            if (!isWanted)
                continue;
            RQ_PrimitiveHandle made =
                slot ? collect(primitive, *slot) : RQ_PrimitiveHandle(new RQ_MSHPrimitive(details_, primitive, parms_));
            if (made)
                piece.emitted.push_back({primitive, std::move(made)});
        }
    }
}

void rq::SlotCollecting::merge(Piece &piece)
{
    for (size_t i = 0; i < piece.parts.size(); ++i)
    {
        Slot &slot = slots_[i];
        Piece::Part &part = piece.parts[i];
        if (slot.data && part.data && part.data->isInterrupted())
            slot.data->setInterrupted();
        if (slot.data && part.data)
            slot.collector->mergeData(slot.data.get(), part.data.get());
        else if (part.data)
            slot.data = std::move(part.data);
        slot.begun = slot.begun || part.begun;
    }
    std::move(piece.emitted.begin(), piece.emitted.end(), std::back_inserter(emitted_));
}

std::vector<RQ_PrimitiveHandle> rq::SlotCollecting::takeEmitted()
{
    std::vector<RQ_PrimitiveHandle> primitives;
    for (Emitted &emitted : emitted_)
        primitives.push_back(std::move(emitted.primitive));
    emitted_.clear();
    return primitives;
}

std::vector<RQ_PrimitiveHandle> rq::SlotCollecting::takeGathered() const
{
    std::vector<RQ_PrimitiveHandle> primitives;
    for (const Slot &slot : slots_)
        if (slot.begun)
            primitives.push_back(slot.collector->endCollecting(details_, slot.data.get()));
    return primitives;
}

bool rq::SlotCollecting::isInterrupted() const
{
    return std::any_of(slots_.begin(), slots_.end(),
                       [](const Slot &slot) { return slot.data && slot.data->isInterrupted(); });
}

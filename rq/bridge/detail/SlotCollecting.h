#pragma once

#include <vector>

#include <host/bas/Progress.h>
#include <host/elm/Range.h>
#include <rq/bridge/MSHPrimCollect.h>

namespace rq
{
/// The collectors that one refinement needs, and what each gathers; a collector of several types has one slot.
///
/// Threads  `collect` runs on several threads by itself; everything else is for the thread of the refinement
class SlotCollecting
{
public:
    /// Look up the collectors of all types that the detail holds.
    SlotCollecting(const RQ_MSHDetailListHandle &details, const RQ_RefineParms *parms);

    /// Give every primitive of a range to the collector of its type; a type without one gets the generic wrapper.
    void collect(const ELM_Range &range, BAS_Progress &progress);

    /// What was emitted on the way, in offset order, and then what the collectors gathered, by their lowest types.
    /// Null handles among them.
    std::vector<RQ_PrimitiveHandle> takeEmitted();
    std::vector<RQ_PrimitiveHandle> takeGathered() const;

    /// Whether a collector says so of its data.
    bool isInterrupted() const;

private:
    struct Slot
    {
        std::shared_ptr<const RQ_MSHPrimCollect> collector;
        bool inBatch;  // takes all its primitives at once
        bool merges;
        bool begun = false;
        std::unique_ptr<RQ_MSHPrimCollectData> data = nullptr;
    };

    /// What is made of one piece of the range.
    struct Piece;

    enum class Share
    {
        ALL,
        MERGING,  // what may be collected in parallel
        OTHERS
    };

    void collectBatch(const ELM_Range &range, BAS_Progress &progress);
    void collectPieces(const ELM_Range &range, Share share, BAS_Progress &progress);
    void collectPiece(const ELM_Range &range, Share share, Piece &piece, BAS_Progress &progress) const;
    bool skipsPage(ELM_Offset primitive, Share share) const;
    const Slot *slotOf(ELM_PrimitiveTypeId type) const
    {
        const int index = slotOfType_[size_t(type)];
        return index >= 0 ? &slots_[size_t(index)] : nullptr;
    }
    bool belongs(const Slot *slot, Share share) const;
    bool needs(Share share) const;
    void merge(Piece &piece);

    const RQ_MSHDetailListHandle &details_;
    const MSH_Detail &detail_;
    const RQ_RefineParms *parms_;
    std::vector<Slot> slots_;      // by their lowest types
    std::vector<int> slotOfType_;  // -1: no collector
    bool wraps_ = false;           // some type has no collector

    struct Emitted
    {
        ELM_Offset offset;
        RQ_PrimitiveHandle primitive;
    };
    std::vector<Emitted> emitted_;
};
}  // namespace rq

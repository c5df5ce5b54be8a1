#pragma once

#include <unordered_map>
#include <vector>

#include <host/elm/Group.h>
#include <rq/bridge/MSHPrimCollect.h>
#include <rq/prim/Refine.h>

namespace rq
{
/// One refinement of a detail: every primitive goes to the collector of its type, then the points that are left.
class DetailWalk
{
public:
    DetailWalk(const RQ_MSHDetailListHandle &details, const ELM_Range *range, const RQ_TransformHandle &transform,
               RQ_Refine &sink, const RQ_RefineParms *parms);

    void run();

private:
    /// One collector in use and what it gathers; a collector of several types has one slot.
    struct Slot
    {
        std::shared_ptr<const RQ_MSHPrimCollect> collector;
        std::unique_ptr<RQ_MSHPrimCollectData> data;
        ELM_PrimitiveTypeId lowestType;
    };

    bool wantsAllAsPoints() const;
    bool fitsBatch() const;
    void collectBatch();
    void collectEach();
    void collectOne(ELM_Offset primitive);
    Slot *slotOf(ELM_PrimitiveTypeId type);
    void emitLoosePoints();
    void emitPoints(const RQ_MSHOffsetList &points, const BAS_StringHolder &instanceFile);
    void finishSlots();
    void emit(const RQ_PrimitiveHandle &primitive);

    const RQ_MSHDetailListHandle &details_;
    const MSH_Detail &detail_;
    const ELM_Range *range_;
    const RQ_TransformHandle &transform_;
    RQ_Refine &sink_;
    const RQ_RefineParms *parms_;
    const ELM_Group *hidden_;
    const ELM_Group *refined_ = nullptr;  // only its primitives, when it exists
    bool instances_;
    std::vector<Slot> slots_;
    std::unordered_map<ELM_PrimitiveTypeId, int> slotOfType_;  // -1: no collector
};
}  // namespace rq

#pragma once

#include <vector>

#include <host/bas/Progress.h>
#include <host/elm/Group.h>
#include <host/elm/Range.h>
#include <rq/bridge/MSHDetailList.h>
#include <rq/prim/Primitive.h>

namespace rq
{
/// One refinement of a detail: every primitive goes to the collector of its type, then the points that are left.
///
/// Nothing is handed over before all is made, so that an interruption gives nothing, and then on the calling thread in a
/// fixed order, so that the output has no trace of the threads.
class DetailWalk
{
public:
    DetailWalk(const RQ_MSHDetailListHandle &details, const ELM_Range *range, const RQ_RefineParms *parms);

    /// What the detail refines to; nothing when it is interrupted.
    std::vector<RQ_PrimitiveHandle> run();

private:
    bool wantsAllAsPoints() const;
    bool wantsLoosePoints() const;
    ELM_Range primitives() const;

    const RQ_MSHDetailListHandle &details_;
    const MSH_Detail &detail_;
    const ELM_Range *range_;
    const RQ_RefineParms *parms_;
    const ELM_Group *hidden_;
    const ELM_Group *refined_ = nullptr;  // only its primitives, when it exists
};
}  // namespace rq

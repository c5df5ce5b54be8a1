#pragma once

#include <host/bas/Progress.h>
#include <host/elm/Range.h>
#include <rq/bridge/MSHPrimCollect.h>

namespace rq
{
/// The data of a collector that can be given all primitives at once, without a call for each.
class RQ_API BatchData : public RQ_MSHPrimCollectData
{
public:
    ~BatchData() override;

    /// Append those of a range that are of the collector's types, in parallel.  Nothing, or a part, when it is interrupted.
    virtual void append(const MSH_Detail &detail, const ELM_Range &range, BAS_Progress &progress) = 0;
};
}  // namespace rq

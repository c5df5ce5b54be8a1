#pragma once

#include <rq/bridge/MSHPrimCollect.h>

namespace rq
{
/// The data of a run that gathers nothing: its options are all that it remembers.
struct RunOptions final : RQ_MSHPrimCollectData
{
    explicit RunOptions(const RQ_RefineParms *given) : parms(given) {}

    static const RQ_RefineParms *of(const RQ_MSHPrimCollectData *data)
    {
        return static_cast<const RunOptions *>(data)->parms;
    }

    const RQ_RefineParms *parms;
};
}  // namespace rq

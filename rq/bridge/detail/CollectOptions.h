#pragma once

#include <rq/bridge/MSHPrimCollect.h>

namespace rq
{
/// The data of collectors that gather nothing: the options are all that a run remembers.
struct CollectOptions : RQ_MSHPrimCollectData
{
    explicit CollectOptions(const RQ_RefineParms *given) : parms(given) {}

    const RQ_RefineParms *parms;  // of the refinement, which outlives the data
};

inline const RQ_RefineParms *optionsOf(const RQ_MSHPrimCollectData *data)
{
    return static_cast<const CollectOptions *>(data)->parms;
}
}  // namespace rq

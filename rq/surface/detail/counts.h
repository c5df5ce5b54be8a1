#pragma once

#include <rq/data/CountArray.h>

namespace rq
{
/// The counts as an array of the width asked for.
inline RQ_DataArrayHandle countsOfWidth(const RQ_CountArray &countArray, RQ_IndexingMode mode)
{
    const RQ_DataArrayHandle counts = countArray.extractCounts();
    if (!counts || mode == RQ_INDEXING_AUTO || counts->checkIndexing(mode))
        return counts;
    RQ_DataArrayHandle converted;
    if (mode == RQ_INDEXING_64)
        counts->getArray<int64_t>(converted);
    else
        counts->getArray<int32_t>(converted);
    return converted;
}
}  // namespace rq

#pragma once

#include <limits>

#include <rq/attrib/detail/viewId.h>
#include <rq/data/CountArray.h>

namespace rq
{
/// Integers as an array of the width asked for: a copy where that is not theirs, as they are where it cannot hold them.
inline RQ_DataArrayHandle integersOfWidth(const RQ_DataArrayHandle &array, RQ_IndexingMode mode)
{
    if (!array || mode == RQ_INDEXING_AUTO || array->checkIndexing(mode))
        return array;
    RQ_DataArrayHandle converted;
    if (mode == RQ_INDEXING_64)
        array->getArray<int64_t>(converted);
    else
    {
        int64_t least = 0, greatest = 0;
        array->getRange(least, greatest);
        if (least >= std::numeric_limits<int32_t>::min() && greatest <= std::numeric_limits<int32_t>::max())
            array->getArray<int32_t>(converted);
    }
    if (!converted)
        return array;
    setViewId(converted, array, viewKey(View::CONVERTED, {uint64_t(converted->getStorage())}));
    return converted;
}

/// The counts as an array of the width asked for.
inline RQ_DataArrayHandle countsOfWidth(const RQ_CountArray &countArray, RQ_IndexingMode mode)
{
    return integersOfWidth(countArray.extractCounts(), mode);
}
}  // namespace rq

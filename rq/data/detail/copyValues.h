#pragma once

#include <algorithm>

#include <host/bas/Parallel.h>
#include <rq/data/DANumeric.h>
#include <rq/data/convert.h>

namespace rq
{
/// Make a numeric array of the same shape and type that owns the values of `array`, converted to T.  Runs in parallel.
template <RQ_NumericValue T> BAS_IntrusivePtr<RQ_DANumeric<T>> copyValues(const RQ_DataArray &array)
{
    // Values of views cost one to ten nanoseconds each, so a piece is some 20 to 200 us of work.
    constexpr int64_t kValuesPerPiece = 16384;

    const int64_t entries = array.entries(), tuple = array.getTupleSize();
    const BAS_IntrusivePtr<RQ_DANumeric<T>> copy(new RQ_DANumeric<T>(entries, tuple, array.getTypeInfo()));
    if (const void *backing = array.getBackingData())
        convertValues(backing, array.getStorage(), copy->data(), RQstorageOf<T>, entries * tuple);
    else
        host::parallelForRange(
            entries, std::max<int64_t>(1, kValuesPerPiece / std::max<int64_t>(1, tuple)),
            [&](int64_t begin, int64_t end) { array.fillArray(copy->data() + begin * tuple, begin, end - begin); });
    return copy;
}
}  // namespace rq

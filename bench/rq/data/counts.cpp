#include <bench/arrays.h>
#include <rq/data/CountArray.h>

namespace
{
constexpr int64_t kCounts = int64_t(4) << 20;

/// Counts of 3, 4 and 5 in turn, or 4 alone.
RQ_DataArrayHandle makeCounts(bool equal)
{
    const BAS_IntrusivePtr<RQ_DANumeric<int32_t>> counts(new RQ_DANumeric<int32_t>(kCounts));
    for (int64_t i = 0; i < kCounts; ++i)
        counts->data()[i] = equal ? 4 : 3 + int32_t(i % 3);
    return counts;
}

const bool registered = [] {
    for (const bool equal : {false, true})
        bench::add({"counts_init", equal ? "equal4M" : "mixed4M", "ours", 1, double(kCounts),
                    double(kCounts) * (equal ? 4.0 : 8.0), false, [equal] {
                        const RQ_DataArrayHandle counts = makeCounts(equal);
                        return bench::Work{[counts] { return bench::keep(RQ_CountArray(counts)); },
                                           [counts] {
                                               int64_t sum = 0;
                                               for (int64_t i = 0; i < kCounts; ++i)
                                                   sum += counts->getI64(i);
                                               return std::abs(double(RQ_CountArray(counts).sumCounts() - sum));
                                           }};
                    }});
    return true;
}();
}  // namespace

#include <numeric>

#include <benchmark/benchmark.h>

#include <bench/arrays.h>
#include <host/bas/CopyCounter.h>
#include <host/mod/Edit.h>
#include <rq/bridge/MSHElementArray.h>
#include <rq/data/DASubArray.h>

namespace
{
constexpr int64_t kCalls = 1'000'000;

int64_t copiedBytes()
{
    const BAS_CopyCounter::Totals totals = BAS_CopyCounter::totals();
    return std::accumulate(totals.begin(), totals.end(), int64_t(0));
}

RQ_DataArrayHandle makeWhole() { return bench::makeNumbers<float>(bench::kRows, 3); }
RQ_DataArrayHandle makePart() { return RQ_DASubArray::createSubArray(makeWhole(), 5, bench::kRows - 9); }

/// The positions of a detail's points but the first and the last five, which the host holds in one block.
RQ_DataArrayHandle makeHostBacked()
{
    MOD_Edit edit{MOD_DetailHandle()};
    if (!edit.appendPoints(bench::kRows))
        return {};
    edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->writeAll<float>();
    const MOD_ConstDetailHandle detail = edit.commit();
    const RQ_MSHOffsetList run(ELM_OffsetList(5, bench::kRows - 10));
    return new RQ_MSHElementArray(detail, &detail.readLock()->positions(), run, ELM_OWNER_POINT);
}

/// Its error is the number of bytes that one call copies.
void addReading(const char *mesh, RQ_DataArrayHandle (*make)())
{
    bench::add({"getArray", mesh, "ours", 1, double(kCalls), 0.0, false, [make] {
                    const RQ_DataArrayHandle array = make();
                    return bench::Work{[array] {
                                           for (int64_t i = 0; i < kCalls; ++i)
                                           {
                                               RQ_DataArrayHandle buffer;
                                               benchmark::DoNotOptimize(array->getF32Array(buffer));
                                           }
                                           return std::shared_ptr<void>();
                                       },
                                       [array] {
                                           const int64_t before = copiedBytes();
                                           RQ_DataArrayHandle buffer;
                                           array->getF32Array(buffer);
                                           return double(copiedBytes() - before);
                                       }};
                }});
}

const bool registered = [] {
    addReading("numeric4Mx3", makeWhole);
    addReading("subarray4Mx3", makePart);
    addReading("host4Mx3", makeHostBacked);
    return true;
}();
}  // namespace

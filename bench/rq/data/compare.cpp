#include <cstring>

#include <benchmark/benchmark.h>

#include <bench/arrays.h>

namespace
{
/// Values that stay in the second cache, and how often a job goes over them.
constexpr int64_t kCached = 65536;
constexpr int64_t kTurns = 256;

/// An equal array must compare as equal, and one with another value at the end as not: 0 when both hold.
template <class T, class Equal> double comparisonError(const RQ_DANumeric<T> &values, Equal &&equal)
{
    RQ_DANumeric<T> other(values);
    const bool finds = equal(values, other);
    other.data()[other.entries() - 1] += T(1);
    return finds && !equal(values, other) ? 0.0 : 1.0;
}

template <class T> void addHash(const char *job, int64_t count, int64_t turns)
{
    bench::add({job, turns > 1 ? "cached64K" : "values16M", "ours", 1, double(count * turns),
                double(count * turns) * double(sizeof(T)), false, [count, turns] {
                    const auto values = bench::makeNumbers<T>(count);
                    return bench::Work{[values, turns] {
                                           for (int64_t turn = 0; turn < turns; ++turn)
                                               benchmark::DoNotOptimize(values->hash());
                                           return std::shared_ptr<void>();
                                       },
                                       [values] {
                                           return comparisonError(
                                               *values, [](const auto &a, const auto &b) { return a.hash() == b.hash(); });
                                       }};
                }});
}

template <class T> void addEqual(const char *job, int64_t count, int64_t turns)
{
    bench::add({job, turns > 1 ? "cached64K" : "values16M", "ours", 1, double(count * turns),
                double(count * turns) * double(sizeof(T)) * 2.0, false, [count, turns] {
                    const auto left = bench::makeNumbers<T>(count), right = bench::makeNumbers<T>(count);
                    return bench::Work{[left, right, turns] {
                                           for (int64_t turn = 0; turn < turns; ++turn)
                                               benchmark::DoNotOptimize(left->isEqual(*right));
                                           return std::shared_ptr<void>();
                                       },
                                       [left] {
                                           return comparisonError(*left,
                                                                  [](const auto &a, const auto &b) { return a.isEqual(b); });
                                       }};
                }});
}

/// What the bus gives to a comparison.
void addMemcmp()
{
    bench::add({"equal_F32", "values16M", "memcmp", 1, double(bench::kValues), double(bench::kValues) * 8.0, false, [] {
                    const auto left = bench::makeNumbers<float>(bench::kValues),
                               right = bench::makeNumbers<float>(bench::kValues);
                    return bench::Work{[left, right] {
                                           benchmark::DoNotOptimize(
                                               std::memcmp(left->data(), right->data(), size_t(bench::kValues) * 4));
                                           return std::shared_ptr<void>();
                                       },
                                       {}};
                }});
}

const bool registered = [] {
    addHash<double>("hash_F64", kCached, kTurns);
    addHash<float>("hash_F32", kCached, kTurns);
    addHash<PLT_Half>("hash_F16", kCached, kTurns);
    addHash<int64_t>("hash_I64", kCached, kTurns);
    addHash<int32_t>("hash_I32", kCached, kTurns);
    addHash<int16_t>("hash_I16", kCached, kTurns);
    addHash<int8_t>("hash_I8", kCached, kTurns);
    addHash<uint8_t>("hash_U8", kCached, kTurns);
    addHash<float>("hash_F32", bench::kValues, 1);
    addEqual<float>("equal_F32", kCached, kTurns);
    addEqual<int32_t>("equal_I32", kCached, kTurns);
    addEqual<float>("equal_F32", bench::kValues, 1);
    addMemcmp();
    return true;
}();
}  // namespace

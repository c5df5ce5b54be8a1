#include <benchmark/benchmark.h>

#include <bench/arrays.h>

namespace
{
/// Values that stay in the second cache, and how often a job goes over them.
constexpr int64_t kCached = 65536;
constexpr int64_t kTurns = 256;

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
                                       {}};
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
                                       [left, right] { return left->isEqual(*right) ? 0.0 : 1.0; }};
                }});
}

const bool registered = [] {
    addHash<float>("hash_F32", kCached, kTurns);
    addHash<int32_t>("hash_I32", kCached, kTurns);
    addHash<double>("hash_F64", kCached, kTurns);
    addHash<float>("hash_F32", bench::kValues, 1);
    addEqual<float>("equal_F32", kCached, kTurns);
    addEqual<int32_t>("equal_I32", kCached, kTurns);
    addEqual<float>("equal_F32", bench::kValues, 1);
    return true;
}();
}  // namespace

#include <algorithm>
#include <limits>

#include <benchmark/benchmark.h>

#include <bench/arrays.h>
#include <host/bas/BoundingBox.h>

namespace
{
using Positions = BAS_IntrusivePtr<RQ_DANumeric<float>>;

/// How far the minima and maxima are from those of a plain loop.
double minMaxError(const RQ_DANumeric<float> &positions)
{
    double min[3], max[3], error = 0.0;
    positions.getMinMax(min, max);
    for (int axis = 0; axis < 3; ++axis)
    {
        float low = std::numeric_limits<float>::max(), high = -low;
        for (int64_t i = 0; i < positions.entries(); ++i)
        {
            low = std::min(low, positions.data()[3 * i + axis]);
            high = std::max(high, positions.data()[3 * i + axis]);
        }
        error = std::max({error, std::abs(min[axis] - low), std::abs(max[axis] - high)});
    }
    return error;
}

/// The time of reading: sums in many lanes, which the compiler vectorises.
float readAll(const float *values, int64_t count)
{
    float sums[64] = {};
    for (int64_t i = 0; i + 64 <= count; i += 64)
        for (int lane = 0; lane < 64; ++lane)
            sums[lane] += values[i + lane];
    return *std::max_element(sums, sums + 64);
}

template <class Run> void addPass(const char *job, const char *who, int threads, Run run)
{
    bench::add({job, "positions16M", who, threads, double(bench::kValues), double(bench::kValues) * 12.0, false, [run] {
                    const Positions positions = bench::makeNumbers<float>(bench::kValues, 3);
                    return bench::Work{[positions, run] {
                                           run(*positions);
                                           return std::shared_ptr<void>();
                                       },
                                       [positions] { return minMaxError(*positions); }};
                }});
}

void runMinMax(const RQ_DANumeric<float> &positions)
{
    double min[3], max[3];
    positions.getMinMax(min, max);
    benchmark::DoNotOptimize(min[0] + max[0]);
}

void runBounds(const RQ_DANumeric<float> &positions)
{
    BAS_BoundingBox box;
    positions.enlargeBounds(box);
    benchmark::DoNotOptimize(box);
}

void runRead(const RQ_DANumeric<float> &positions)
{
    benchmark::DoNotOptimize(readAll(positions.data(), 3 * positions.entries()));
}

const bool registered = [] {
    for (const int threads : {1, 2})
    {
        addPass("bounds", "ours", threads, runBounds);
        addPass("min_max", "ours", threads, runMinMax);
    }
    addPass("bounds", "reading", 1, runRead);
    return true;
}();
}  // namespace

#include <rq/surface/detail/pointStretches.h>

#include <type_traits>

#include <host/bas/clones.h>

namespace
{
// Of triangles, quads, and patterns of two or more of them.
constexpr int kPeriods[] = {4, 3, 6, 8, 12};

/// How many entries from `at` on follow those `period` places before by `step`.
template <class Index, class Step>
HOST_CLONES int64_t follow(const Index *points, int64_t at, int64_t count, int period, Step step)
{
    // With the differences or-ed together this is as fast as the list can be read, and that is faster when asked for early:
    // the processor itself does not read on beyond the page.
    constexpr int64_t kBlock = 32, kAhead = 2048, kLine = 64;
    for (; at + kBlock <= count; at += kBlock)
    {
        const Index *here = points + at, *before = here - period;
        for (int64_t line = 0; line < kBlock * int64_t(sizeof(Index)); line += kLine)
            __builtin_prefetch(reinterpret_cast<const char *>(here) + kAhead + line);
        Step differences = 0;
        for (int64_t i = 0; i < kBlock; ++i)
            differences |= Step(here[i]) ^ (Step(before[i]) + step);
        if (differences != 0)
            break;
    }
    while (at < count && Step(points[at]) == Step(points[at - period]) + step)
        ++at;
    return at;
}
}  // namespace

namespace rq
{
template <class Index> PointStretch findStretch(const Index *points, int64_t count)
{
    // Points are not negative, so that steps which agree when they wrap around agree.
    using Step = std::make_unsigned_t<Index>;
    if (count < PointStretch::kLeastEntries)
        return {};
    for (const int period : kPeriods)
    {
        const Index *next = points + period;
        const auto stepAt = [&](int i) { return Step(next[i]) - Step(points[i]); };
        if (stepAt(0) != stepAt(1) || stepAt(0) != stepAt(2))
            continue;
        const int64_t entries = follow(points, period, count, period, stepAt(0));
        if (entries >= PointStretch::kLeastEntries)
            return {entries, period, int64_t(next[0]) - int64_t(points[0])};
    }
    return {};
}

template PointStretch findStretch(const int32_t *points, int64_t count);
template PointStretch findStretch(const int64_t *points, int64_t count);
}  // namespace rq

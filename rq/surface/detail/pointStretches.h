#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <span>

// The points of many faces at once.  Faces mostly come in rows, of grids, terrains or subdivided surfaces: the points of a
// face are those of the one before, each a step further.

namespace rq
{
/// Points `first`, `first + step`, ...; `step` is at least 1.
struct PointProgression
{
    int64_t first;
    int64_t count;
    int64_t step;
};

/// The beginning of a list whose every entry is the one `period` places before it and `step` more.
struct PointStretch
{
    static constexpr int64_t kLeastEntries = 64;  // fewer are not worth the search
    static constexpr int kMostPeriod = 12;
    static constexpr int kLap = 24;  // a multiple of every period

    int64_t entries = 0;  // 0: the list does not begin so
    int period = 1;
    int64_t step = 0;
};

/// `Index` is int32_t or int64_t.
template <class Index> PointStretch findStretch(const Index *points, int64_t count);

extern template PointStretch findStretch(const int32_t *points, int64_t count);
extern template PointStretch findStretch(const int64_t *points, int64_t count);

/// The points of a stretch as progressions: one for each place in the period, less those that continue others.
class StretchProgressions
{
public:
    template <class Index> StretchProgressions(const Index *points, const PointStretch &stretch)
    {
        const int64_t step = std::abs(stretch.step);
        for (int place = 0; place < stretch.period; ++place)
        {
            const int64_t turns = (stretch.entries - place + stretch.period - 1) / stretch.period;
            const int64_t first = int64_t(points[place]) + std::min<int64_t>(stretch.step, 0) * (turns - 1);
            if (step == 0)
                progressions_[size_t(size_++)] = {first, 1, 1};
            else
                add({first, turns, step});
        }
    }

    const PointProgression *begin() const { return progressions_.data(); }
    const PointProgression *end() const { return begin() + size_; }

private:
    // All have the same step.
    void add(const PointProgression &added)
    {
        for (PointProgression &other : std::span(progressions_.data(), size_t(size_)))
        {
            const int64_t gap = added.first - other.first, ahead = gap / added.step;
            if (gap % added.step != 0 || ahead > other.count || -ahead > added.count)
                continue;
            const int64_t last = std::max(other.count, ahead + added.count);
            other.first = std::min(other.first, added.first);
            other.count = last - std::min<int64_t>(ahead, 0);
            return;
        }
        progressions_[size_t(size_++)] = added;
    }

    std::array<PointProgression, PointStretch::kMostPeriod> progressions_;
    int size_ = 0;
};

/// Call `onStretch(points, stretch)` for the stretches of a list and `onOthers(points, count)` for what lies between.  The
/// first answers how many entries it has seen to: those of the stretch, and more that are then passed over.
template <class Index, class Stretch, class Others>
void visitStretches(const Index *points, int64_t count, Stretch &&onStretch, Others &&onOthers)
{
    // Where no stretch begins, the next search comes later and later: in a list in no order they cost a twentieth.
    constexpr int64_t kMostOthers = 512;
    int64_t others = PointStretch::kLeastEntries;
    while (count > 0)
    {
        int64_t taken = std::min(count, others);
        if (const PointStretch stretch = findStretch(points, count); stretch.entries > 0)
        {
            taken = onStretch(points, stretch);
            others = PointStretch::kLeastEntries;
        }
        else
        {
            onOthers(points, taken);
            others = std::min(2 * others, kMostOthers);
        }
        points += taken;
        count -= taken;
    }
}
}  // namespace rq

#pragma once

#include <cstdint>
#include <vector>

#include <host/bas/LargeBlocks.h>
#include <rq/surface/detail/UsedPoints.h>
#include <rq/surface/detail/pointStretches.h>

namespace rq
{
/// The places of used points among all used ones.
///
/// Cost  a byte a point.  A table of whole numbers would be read as fast by meshes in order, but fills the caches: it takes
///       twice as long in no order
class PointPlaces
{
public:
    /// `used` must outlive this object.
    explicit PointPlaces(const UsedPoints &used);

    /// The place of a used point.
    int64_t operator[](int64_t point) const { return before_[uint64_t(point) / kGroup] + within_[size_t(point)]; }

    /// Write the places of so many used points.
    template <class T> void copyTo(T *places, const T *points, int64_t count) const
    {
        visitStretches(
            points, count,
            [&](const T *some, const PointStretch &stretch) {
                T *const to = places + (some - points);
                areSpaced(StretchProgressions(some, stretch)) ? copyStretch(to, some, stretch)
                                                              : copyEach(to, some, stretch.entries);
                return stretch.entries;
            },
            [&](const T *some, int64_t entries) { copyEach(places + (some - points), some, entries); });
    }

private:
    // So many that the last one's place among them fits a byte.
    static constexpr uint64_t kGroup = 256;

    template <class T> void copyEach(T *places, const T *points, int64_t count) const
    {
        for (int64_t i = 0; i < count; ++i)
            places[i] = T((*this)[points[i]]);
    }

    /// As the points are a step further from face to face, so are their places.
    template <class T> void copyStretch(T *places, const T *points, const PointStretch &stretch) const
    {
        constexpr int kLap = PointStretch::kLap;
        copyEach(places, points, kLap);
        T further[kLap];
        for (int i = 0; i < kLap; ++i)
            further[i] = T(((*this)[points[i + stretch.period]] - (*this)[points[i]]) * (kLap / stretch.period));
        int64_t i = kLap;
        for (; i + kLap <= stretch.entries; i += kLap)
            for (int k = 0; k < kLap; ++k)
                places[i + k] = T(places[i + k - kLap] + further[k]);
        for (int k = 0; i + k < stretch.entries; ++k)
            places[i + k] = T(places[i + k - kLap] + further[k]);
    }

    /// True when in each progression as many points are used between any point and the next.
    bool areSpaced(const StretchProgressions &progressions) const;

    const UsedPoints &used_;
    std::vector<uint8_t, BAS_BlockAllocator<uint8_t>> within_;  // by point
    std::vector<int64_t> before_;                               // by group
};
}  // namespace rq

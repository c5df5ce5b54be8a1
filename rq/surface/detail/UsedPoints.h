#pragma once

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstdint>
#include <vector>

#include <host/bas/LargeBlocks.h>
#include <host/bas/Parallel.h>
#include <rq/data/Values.h>
#include <rq/surface/detail/pointStretches.h>

namespace rq
{
/// Which points of a mesh some corner uses, and the place of each among them.
///
/// Cost     a byte a point: one is written without looking at its neighbours, so threads need not agree
/// Threads  everything runs in parallel
class UsedPoints
{
public:
    static constexpr int64_t kItemsPerTask = 65536;  // a fifth of a nanosecond to one each

    UsedPoints(const RQ_DataArray &vertexList, int64_t points);

    int64_t points() const { return points_; }
    int64_t count() const { return before_.back(); }

    /// The first used point, of which there must be one.
    int64_t first() const { return std::find(flags(), flags() + points_, 1) - flags(); }

    /// True when the used points are all from the first to the last of them.
    bool isRun() const
    {
        const auto last = std::find(std::reverse_iterator(flags() + points_), std::reverse_iterator(flags()), 1);
        return count() > 0 && last.base() - flags() == first() + count();
    }

    /// Write the used points in order.
    template <class T> void copyTo(T *rows) const
    {
        forEachBlock([&](int64_t begin, int64_t end, int64_t row) {
            for (int64_t word = begin / kWordBytes; word < wordsFor(end); ++word)
                for (uint64_t flags = words_[size_t(word)]; flags; flags &= flags - 1)
                    rows[row++] = T(word * kWordBytes + std::countr_zero(flags) / 8);
        });
    }

    /// Write for every point its place among the used ones, or -1.
    template <class T> void copyPlacesTo(T *places) const
    {
        forEachBlock([&](int64_t begin, int64_t end, int64_t row) {
            for (int64_t point = begin; point < end; ++point)
                places[point] = flags()[point] ? T(row++) : T(-1);
        });
    }

    /// The places of used points, which may be asked for one by one.
    class Places
    {
    public:
        explicit Places(const UsedPoints &used);

        int64_t operator[](int64_t point) const
        {
            return before_[size_t(point / kGroup)] + reinterpret_cast<const uint8_t *>(within_.data())[point];
        }

    private:
        // So many that the last one's place among them fits a byte.  A table of whole numbers would be read as fast by
        // meshes in order, but fills the caches: it takes twice as long in no order.
        static constexpr int64_t kGroup = 256;

        std::vector<uint64_t, BAS_BlockAllocator<uint64_t>> within_;  // by point, a byte each
        std::vector<int64_t> before_;                                 // by group
    };

private:
    // A byte of every word is one point's.
    static constexpr int64_t kWordBytes = sizeof(uint64_t);
    static constexpr uint64_t kOnes = 0x0101010101010101;
    static int64_t wordsFor(int64_t points) { return (points + kWordBytes - 1) / kWordBytes; }

    uint8_t *flags() { return reinterpret_cast<uint8_t *>(words_.data()); }
    const uint8_t *flags() const { return reinterpret_cast<const uint8_t *>(words_.data()); }
    int64_t blocks() const { return int64_t(before_.size()) - 1; }

    /// Call `body(begin, end, before)` for the points of each block: so many are used before it.
    template <class Body> void forEachBlock(Body &&body) const
    {
        host::parallelFor(blocks(), 1, [&](int64_t block) {
            body(block * kItemsPerTask, std::min(points_, (block + 1) * kItemsPerTask), before_[size_t(block)]);
        });
    }

    template <class Index> void mark(const Index *points, int64_t count);
    void mark(const PointProgression &progression);

    int64_t points_;
    std::vector<uint64_t, BAS_BlockAllocator<uint64_t>> words_;
    std::vector<int64_t> before_;  // by block of points, and behind the last the number of all
};
}  // namespace rq

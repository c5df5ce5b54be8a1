#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <vector>

#include <host/bas/LargeBlocks.h>
#include <host/bas/Parallel.h>
#include <rq/data/DataArray.h>

namespace rq
{
/// Which points of a mesh some corner uses, and the place of each among them.
///
/// Cost     a bit a point; while it is built also a byte a point, unless the faces come in rows
/// Threads  everything runs in parallel
class UsedPoints
{
public:
    static constexpr int64_t kItemsPerTask = 65536;  // a fifth of a nanosecond to one each

    UsedPoints(const RQ_DataArray &vertexList, int64_t points);

    int64_t points() const { return points_; }
    int64_t count() const { return before_.back(); }

    /// The first used point, of which there must be one.
    int64_t first() const
    {
        const auto word = std::find_if(words_.begin(), words_.end(), [](uint64_t bits) { return bits != 0; });
        return (word - words_.begin()) * kWordBits + std::countr_zero(*word);
    }

    /// True when the used points are all from the first to the last of them.
    bool isRun() const
    {
        const auto word = std::find_if(words_.rbegin(), words_.rend(), [](uint64_t bits) { return bits != 0; });
        return count() > 0 && (words_.rend() - word) * kWordBits - std::countl_zero(*word) == first() + count();
    }

    /// Write the used points in order.
    template <class T> void copyTo(T *rows) const
    {
        forEachBlock([&](int64_t begin, int64_t end, int64_t row) {
            for (int64_t start = begin; start < end; start += kWordBits)
                for (uint64_t bits = words_[size_t(start / kWordBits)]; bits; bits &= bits - 1)
                    rows[row++] = T(start + std::countr_zero(bits));
        });
    }

    /// Write for every point its place among the used ones, or -1.
    template <class T> void copyPlacesTo(T *places) const
    {
        forEachBlock([&](int64_t begin, int64_t end, int64_t row) {
            for (int64_t point = begin; point < end; ++point)
                places[point] = isUsed(point) ? T(row++) : T(-1);
        });
    }

    /// The bits of the points from `point` on, a multiple of 64 or not; zero where there are none.
    uint64_t bitsFrom(int64_t point) const
    {
        const uint64_t *word = words_.data() + point / kWordBits;
        return point % kWordBits == 0 ? *word : *word >> point % kWordBits | word[1] << (kWordBits - point % kWordBits);
    }

    /// Call `body(begin, end, before)` for the points of each block: so many are used before it.
    template <class Body> void forEachBlock(Body &&body) const
    {
        host::parallelFor(int64_t(before_.size()) - 1, 1, [&](int64_t block) {
            body(block * kItemsPerTask, std::min(points_, (block + 1) * kItemsPerTask), before_[size_t(block)]);
        });
    }

private:
    class Marks;
    static constexpr int64_t kWordBits = 64;

    template <class Index> void add(Marks &marks, const RQ_DataArray &vertexList);
    void countBlocks(Marks &marks);
    bool isUsed(int64_t point) const { return words_[size_t(point / kWordBits)] >> point % kWordBits & 1; }

    int64_t points_;
    std::vector<uint64_t> words_;  // and an empty one behind the last
    std::vector<int64_t> before_;  // by block of points, and behind the last the number of all
};
}  // namespace rq

#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <vector>

namespace rq
{
/// The points that some corners use, in increasing order, and the place of each among them.
///
/// Cost  a bit and half a bit for every point between the least and the greatest that is used: parts of a mesh mostly use
///       points near each other
class PointRanks
{
public:
    /// `points[i]` for i in [0, corners) names the points.
    template <class Index> PointRanks(const Index *points, int64_t corners)
    {
        if (corners == 0)
            return;
        const auto [least, greatest] = std::minmax_element(points, points + corners);
        first_ = int64_t(*least);
        words_.resize(size_t((int64_t(*greatest) - first_) / 64 + 1));
        for (int64_t corner = 0; corner < corners; ++corner)
        {
            const uint64_t bit = uint64_t(int64_t(points[corner]) - first_);
            words_[bit >> 6].bits |= uint64_t(1) << (bit & 63);
        }
        countBefore();
        isRun_ = count_ == int64_t(*greatest) - first_ + 1;
    }

    /// Number of points that are used, and the least of them.
    int64_t count() const { return count_; }
    int64_t first() const { return first_; }

    /// True when the points are all from the first on.
    bool isRun() const { return isRun_; }

    /// Write the places of the points of so many corners.  `Index` is int32_t or int64_t.
    template <class Index> void copyRanksTo(Index *ranks, const Index *points, int64_t corners) const;

    /// Write the used points in order.
    template <class Index> void copyTo(Index *points) const
    {
        int64_t start = first_;
        for (const Word &word : words_)
        {
            for (uint64_t bits = word.bits; bits; bits &= bits - 1)
                *points++ = Index(start + std::countr_zero(bits));
            start += 64;
        }
    }

    struct Word
    {
        uint64_t bits = 0;
        int64_t before = 0;  // used points in earlier words
    };

private:
    // For each word, and in all.
    void countBefore();

    std::vector<Word> words_;
    int64_t first_ = 0;
    int64_t count_ = 0;
    bool isRun_ = true;
};

extern template void PointRanks::copyRanksTo(int32_t *ranks, const int32_t *points, int64_t corners) const;
extern template void PointRanks::copyRanksTo(int64_t *ranks, const int64_t *points, int64_t corners) const;
}  // namespace rq

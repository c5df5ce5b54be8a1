#include <rq/surface/detail/PointRanks.h>

#include <host/bas/clones.h>

namespace
{
// The processors with wide vectors count bits in one step, which others do in a dozen.
HOST_CLONES int64_t sumBits(rq::PointRanks::Word *words, size_t count)
{
    int64_t sum = 0;
    for (size_t i = 0; i < count; ++i)
    {
        words[i].before = sum;
        sum += std::popcount(words[i].bits);
    }
    return sum;
}

template <class Index>
HOST_CLONES void rankAll(const rq::PointRanks::Word *words, int64_t first, Index *ranks, const Index *points,
                         int64_t corners)
{
    for (int64_t corner = 0; corner < corners; ++corner)
    {
        const uint64_t bit = uint64_t(int64_t(points[corner]) - first);
        const rq::PointRanks::Word &word = words[bit >> 6];
        ranks[corner] = Index(word.before + std::popcount(word.bits & ~(~uint64_t(0) << (bit & 63))));
    }
}
}  // namespace

namespace rq
{
void PointRanks::countBefore() { count_ = sumBits(words_.data(), words_.size()); }

template <class Index> void PointRanks::copyRanksTo(Index *ranks, const Index *points, int64_t corners) const
{
    if (isRun_)
        std::transform(points, points + corners, ranks, [first = Index(first_)](Index point) { return point - first; });
    else
        rankAll(words_.data(), first_, ranks, points, corners);
}

template void PointRanks::copyRanksTo(int32_t *ranks, const int32_t *points, int64_t corners) const;
template void PointRanks::copyRanksTo(int64_t *ranks, const int64_t *points, int64_t corners) const;
}  // namespace rq

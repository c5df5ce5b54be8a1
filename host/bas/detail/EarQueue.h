#pragma once

#include <bit>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace host
{
/// The order in which the corners of one polygon are cut: first by tier, then by key, then by number.
///
/// Cost  corners are searched one by one, or log n a change through a heap; buffers are kept from run to run
class EarQueue
{
public:
    enum Tier : uint64_t
    {
        kFold,      // spikes and repeated points have no area; without them the tests of ears need not know of them
        kEar,       // not yet tested, or tested again because something changed
        kTouched,   // a good ear, but a corner lies on its diagonal, so a triangle without area will follow
        kStraight,  // no area, always safe
        kBlocked,   // from here on only polygons that cross themselves arrive
        kReflex,
    };

    /// The corners of a new polygon, each of which has to be put.
    void begin(int count);

    /// Once all corners of a large polygon have been put.
    void makeHeap();

    void put(int corner, Tier tier, double key) { setRank(corner, rankOf(tier, key)); }
    void changeTier(int corner, Tier tier) { setRank(corner, (ranks_[corner] & kKeyMask) | uint64_t(tier) << kTierShift); }
    void remove(int corner) { ranks_[corner] = kGone; }

    Tier tierOf(int corner) const { return Tier(ranks_[corner] >> kTierShift); }
    bool isGone(int corner) const { return ranks_[corner] == kGone; }

    /// The corner that comes first.  It has to be removed or put again before anybody asks for the next.
    int best();

private:
    static constexpr int kTierShift = 61;
    static constexpr uint64_t kKeyMask = (uint64_t(1) << kTierShift) - 1;
    static constexpr uint64_t kGone = std::numeric_limits<uint64_t>::max();

    /// Positive doubles order like their bits; the lowest four make room for the tier.
    static uint64_t rankOf(Tier tier, double key)
    {
        return uint64_t(tier) << kTierShift | std::bit_cast<uint64_t>(key) >> 4;
    }

    void setRank(int corner, uint64_t rank);

    int count_ = 0;
    bool hasHeap_ = false;
    std::vector<uint64_t> ranks_;
    std::vector<std::pair<uint64_t, int>> heap_;  // an entry with an outdated rank is void
};
}  // namespace host

#include <rq/surface/detail/PointPlaces.h>

#include <algorithm>
#include <bit>
#include <cstring>

namespace rq
{
namespace
{
constexpr int64_t kWordBytes = 8;
constexpr uint64_t kOnes = 0x0101010101010101;

/// Eight bits as the flags of eight points, a byte each.
uint64_t flagsOf(uint64_t bits)
{
    static_assert(std::endian::native == std::endian::little, "the first point of a word is its lowest byte");
    // Each byte keeps its own bit, and is more than 0x7f with 0x7f added unless it is zero.
    return ((bits * kOnes & 0x8040201008040201) + 0x7f * kOnes) >> 7 & kOnes;
}
}  // namespace

PointPlaces::PointPlaces(const UsedPoints &used)
    : used_(used), within_(size_t((used.points() + kWordBytes - 1) / kWordBytes * kWordBytes)),
      before_(within_.size() / kGroup + 1)
{
    static_assert(UsedPoints::kItemsPerTask % kGroup == 0);
    used.forEachBlock([&](int64_t begin, int64_t end, int64_t row) {
        uint64_t within = 0, bits = 0;
        for (int64_t point = begin; point < end; point += kWordBytes, bits >>= kWordBytes)
        {
            if (point % 64 == 0)
                bits = used.bitsFrom(point);
            if (uint64_t(point) % kGroup == 0)
            {
                row += int64_t(within);
                within = 0;
                before_[uint64_t(point) / kGroup] = row;
            }
            // Each byte becomes the sum of those up to it; moved on by one, of those before it.
            const uint64_t sums = flagsOf(bits & 0xff) * kOnes, places = (sums << 8) + within * kOnes;
            std::memcpy(within_.data() + point, &places, sizeof(places));
            within += sums >> 56;
        }
    });
}

bool PointPlaces::areSpaced(const StretchProgressions &progressions) const
{
    constexpr int64_t kBits = 64, kMostStep = kBits;  // beyond, looking at all between takes longer than at each
    for (const auto &[first, count, step] : progressions)
    {
        if (step > kMostStep)
            return false;
        // Those between the first two repeat up to the last; with a step of one there are none.
        const int64_t end = step > 1 ? first + (count - 2) * step : first;
        for (int64_t point = first; point < end; point += kBits)
            if ((used_.bitsFrom(point) ^ used_.bitsFrom(point + step)) << std::max<int64_t>(0, point + kBits - end))
                return false;
    }
    return true;
}
}  // namespace rq

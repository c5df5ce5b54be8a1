#include <rq/surface/detail/UsedPoints.h>

#include <cstring>
#include <numeric>

namespace rq
{
UsedPoints::UsedPoints(const RQ_DataArray &vertexList, int64_t points)
    : points_(points), words_(size_t(wordsFor(points))), before_(size_t((points + kItemsPerTask - 1) / kItemsPerTask) + 1, 0)
{
    host::parallelForRange(int64_t(words_.size()), kItemsPerTask / kWordBytes, [this](int64_t begin, int64_t end) {
        std::fill(words_.begin() + begin, words_.begin() + end, 0);
    });
    const auto markAll = [this](const auto &list) {
        host::parallelForRange(list.size(), kItemsPerTask,
                               [&](int64_t begin, int64_t end) { mark(list.data() + begin, end - begin); });
    };
    if (vertexList.getStorage() == RQ_STORAGE_INT64)
        markAll(Values<int64_t>(vertexList));
    else
        markAll(Values<int32_t>(vertexList));
    host::parallelFor(blocks(), 1, [&](int64_t block) {
        // So few items that 32 bits count them: twice as many lanes.
        const int64_t begin = block * kItemsPerTask, end = std::min(points, begin + kItemsPerTask);
        before_[size_t(block) + 1] = std::accumulate(flags() + begin, flags() + end, uint32_t(0));
    });
    std::partial_sum(before_.begin(), before_.end(), before_.begin());
}

// Several corners mark one point: all write the same value.
template <class Index> void UsedPoints::mark(const Index *points, int64_t count)
{
    // By a pointer of its own: a byte may be part of anything, so nothing else would stay in registers.
    uint8_t *const used = flags();
    const auto markOne = [used](uint64_t point) {
        std::atomic_ref<uint8_t>(used[point]).store(1, std::memory_order_relaxed);
    };
    const auto markEach = [&](const Index *some, int64_t entries) {
        int64_t i = 0;
        if constexpr (sizeof(Index) == sizeof(uint32_t))
        {
            // Reading takes as long as marking, so two points are read at a time; which comes first does not matter.
            constexpr int64_t kPairs = 4;
            for (; i + 2 * kPairs <= entries; i += 2 * kPairs)
            {
                uint64_t pairs[kPairs];
                std::memcpy(pairs, some + i, sizeof(pairs));
                for (const uint64_t pair : pairs)
                {
                    markOne(uint32_t(pair));
                    markOne(pair >> 32);
                }
            }
        }
        for (; i < entries; ++i)
            markOne(uint64_t(some[i]));
    };
    visitPoints(
        points, count, [this](const PointProgression &progression) { mark(progression); }, markEach);
}

void UsedPoints::mark(const PointProgression &progression)
{
    const auto [first, count, step] = progression;
    uint8_t *const used = flags();
    const auto markOne = [used](int64_t point) {
        std::atomic_ref<uint8_t>(used[point]).store(1, std::memory_order_relaxed);
    };
    int64_t point = first;
    const int64_t end = first + count * step;
    if (step == 1)
    {
        for (; point < end && point % kWordBytes != 0; ++point)
            markOne(point);
        for (; point + kWordBytes <= end; point += kWordBytes)
            std::atomic_ref<uint64_t>(words_[size_t(point / kWordBytes)]).store(kOnes, std::memory_order_relaxed);
    }
    for (; point < end; point += step)
        markOne(point);
}

UsedPoints::Places::Places(const UsedPoints &used)
    : within_(used.words_.size()), before_(size_t((used.points_ + kGroup - 1) / kGroup))
{
    static_assert(kItemsPerTask % kGroup == 0);
    static_assert(std::endian::native == std::endian::little, "the first point of a word is its lowest byte");
    used.forEachBlock([&](int64_t begin, int64_t end, int64_t row) {
        for (int64_t group = begin; group < end; group += kGroup)
        {
            before_[size_t(group / kGroup)] = row;
            uint64_t within = 0;
            for (int64_t word = group / kWordBytes; word < wordsFor(std::min(end, group + kGroup)); ++word)
            {
                // Each byte becomes the sum of those up to it; moved on by one, of those before it.
                const uint64_t sums = used.words_[size_t(word)] * kOnes;
                within_[size_t(word)] = (sums << 8) + within * kOnes;
                within += sums >> 56;
            }
            row += int64_t(within);
        }
    });
}
}  // namespace rq

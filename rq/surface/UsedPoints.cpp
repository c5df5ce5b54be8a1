#include <rq/surface/detail/UsedPoints.h>

#include <atomic>
#include <cstring>
#include <mutex>
#include <numeric>
#include <span>
#include <utility>

#include <host/bas/clones.h>
#include <rq/data/Values.h>
#include <rq/surface/detail/pointStretches.h>

namespace rq
{
namespace
{
// Flags of eight points, a byte each, and as many bits.
static_assert(std::endian::native == std::endian::little, "the first point of a word is its lowest byte");
constexpr int64_t kWordBytes = 8;
constexpr uint64_t kOnes = 0x0101010101010101;

uint64_t bitsOf(uint64_t flags) { return flags * 0x0102040810204080 >> 56; }

HOST_CLONES int64_t countBits(const uint64_t *words, int64_t count)
{
    int64_t bits = 0;
    for (int64_t i = 0; i < count; ++i)
        bits += std::popcount(words[i]);
    return bits;
}
}  // namespace

/// Marks points from many threads at once.
class UsedPoints::Marks
{
public:
    explicit Marks(UsedPoints &used) : words_(used.words_.data()), flags_(size_t(used.points_ + kWordBytes - 1) / kWordBytes)
    {}

    /// Add the points of a list.  Given `aside`, every other row of a grid is put there instead: the rows beside it have
    /// most of its points.
    template <class Index> void add(std::span<const Index> points, std::vector<std::span<const Index>> *aside = nullptr)
    {
        std::span<const Index> passed;  // the row behind the last one, if it is passed over
        int64_t length = 0, first = 0, apart = 0;
        const auto settle = [&](bool isBetweenRows) {
            isBetweenRows ? aside->push_back(passed) : add(passed);
            passed = {};
        };
        const auto addStretch = [&](const Index *some, const PointStretch &stretch) {
            for (const PointProgression &progression : StretchProgressions(some, stretch))
                addProgression(progression);
            if (!aside)
                return stretch.entries;
            const int64_t before = std::exchange(first, *some);
            bool isGrid = stretch.entries == std::exchange(length, stretch.entries);
            if (passed.empty())
                apart = first - before;
            else
            {
                // The last row of a grid has points of its own: no other follows as far behind it.
                const bool goesOn = first == before + 2 * apart;
                isGrid = isGrid && goesOn;
                settle(goesOn);
            }
            if (isGrid)
            {
                const std::span rest = points.subspan(size_t(some - points.data() + stretch.entries));
                passed = rest.first(std::min(rest.size(), size_t(stretch.entries)));
            }
            return stretch.entries + int64_t(passed.size());
        };
        visitStretches(points.data(), int64_t(points.size()), addStretch, [this](const Index *some, int64_t entries) {
            entries > PointStretch::kLeastEntries ? addMany(some, entries) : addFew(some, entries);
        });
        if (!passed.empty())
            settle(false);
    }

    /// Add what bytes tell of the points [begin, end) to their bits.
    void collect(int64_t begin, int64_t end)
    {
        if (!hasFlags_)
            return;
        for (int64_t word = begin / kWordBytes; word * kWordBytes < end; ++word)
            words_[word / 8] |= bitsOf(flags_[size_t(word)]) << word % 8 * 8;
    }

private:
    void addBits(int64_t word, uint64_t bits)
    {
        const std::atomic_ref<uint64_t> place(words_[word]);
        if (bits == ~uint64_t(0))
            place.store(bits, std::memory_order_relaxed);
        else if (bits & ~place.load(std::memory_order_relaxed))
            place.fetch_or(bits, std::memory_order_relaxed);
    }

    void addProgression(const PointProgression &progression)
    {
        const auto [first, count, step] = progression;
        const int64_t end = first + count * step;
        step == 1 ? addRun(first, end) : addSpaced(first, end, step);
    }

    void addRun(int64_t begin, int64_t end)
    {
        const int64_t first = begin / kWordBits, last = (end - 1) / kWordBits;
        const uint64_t head = ~uint64_t(0) << begin % kWordBits,
                       tail = ~uint64_t(0) >> (kWordBits - 1 - (end - 1) % kWordBits);
        if (first == last)
            return addBits(first, head & tail);
        addBits(first, head);
        for (int64_t word = first + 1; word < last; ++word)
            addBits(word, ~uint64_t(0));
        addBits(last, tail);
    }

    void addSpaced(int64_t begin, int64_t end, int64_t step)
    {
        uint64_t pattern = 0;
        for (int64_t bit = 0; bit < kWordBits; bit += step)
            pattern |= uint64_t(1) << bit;
        for (int64_t point = begin; point < end;)
        {
            const int64_t start = point / kWordBits * kWordBits, stop = std::min(end, start + kWordBits);
            addBits(start / kWordBits, pattern << (point - start) & ~uint64_t(0) >> (start + kWordBits - stop));
            point += (stop - point + step - 1) / step * step;
        }
    }

    template <class Index> void addFew(const Index *points, int64_t count)
    {
        for (int64_t i = 0; i < count; ++i)
            addBits(int64_t(points[i]) / kWordBits, uint64_t(1) << points[i] % kWordBits);
    }

    // A byte is written without a look at its neighbours, so threads need not wait for each other, nor for what the last
    // corner wrote: all that mark a point write the same.
    template <class Index> void addMany(const Index *points, int64_t count)
    {
        std::call_once(cleared_, [this] {
            std::fill(flags_.begin(), flags_.end(), 0);
            hasFlags_ = true;
        });
        uint8_t *const flags = reinterpret_cast<uint8_t *>(flags_.data());
        const auto add = [flags](uint64_t point) {
            std::atomic_ref<uint8_t>(flags[point]).store(1, std::memory_order_relaxed);
        };
        int64_t i = 0;
        if constexpr (sizeof(Index) == sizeof(uint32_t))
        {
            // Reading takes as long as marking, so two points are read at a time; which comes first does not matter.
            constexpr int64_t kPairs = 4;
            for (; i + 2 * kPairs <= count; i += 2 * kPairs)
            {
                uint64_t pairs[kPairs];
                std::memcpy(pairs, points + i, sizeof(pairs));
                for (const uint64_t pair : pairs)
                {
                    add(uint32_t(pair));
                    add(pair >> 32);
                }
            }
        }
        for (; i < count; ++i)
            add(uint64_t(points[i]));
    }

    uint64_t *words_;
    std::vector<uint64_t, BAS_BlockAllocator<uint64_t>> flags_;  // eight points each, unset until needed
    std::once_flag cleared_;
    bool hasFlags_ = false;
};

UsedPoints::UsedPoints(const RQ_DataArray &vertexList, int64_t points)
    : points_(points), words_(size_t((points + kWordBits - 1) / kWordBits) + 1),
      before_(size_t((points + kItemsPerTask - 1) / kItemsPerTask) + 1)
{
    Marks marks(*this);
    if (vertexList.getStorage() == RQ_STORAGE_INT64)
        add<int64_t>(marks, vertexList);
    else
        add<int32_t>(marks, vertexList);
}

template <class Index> void UsedPoints::add(Marks &marks, const RQ_DataArray &vertexList)
{
    using Points = std::span<const Index>;
    // Four corners share a point of a grid, or six.  Where fewer do, points are left over, and half the rows cannot tell.
    constexpr int64_t kFewCorners = 3;
    constexpr int64_t kRowsPerTask = 16;
    const Values<Index> list(vertexList);
    const bool hasMany = list.size() > kFewCorners * points_;
    std::vector<Points> aside;
    std::mutex mutex;
    host::parallelForRange(list.size(), kItemsPerTask, [&](int64_t begin, int64_t end) {
        std::vector<Points> some;
        marks.add(Points(list.data() + begin, size_t(end - begin)), hasMany ? &some : nullptr);
        const std::lock_guard lock(mutex);
        aside.insert(aside.end(), some.begin(), some.end());
    });
    countBlocks(marks);
    if (count() == points_ || aside.empty())
        return;
    host::parallelFor(int64_t(aside.size()), kRowsPerTask, [&](int64_t i) { marks.add(aside[size_t(i)]); });
    countBlocks(marks);
}

void UsedPoints::countBlocks(Marks &marks)
{
    std::vector<int64_t> counts(before_.size());
    forEachBlock([&](int64_t begin, int64_t end, int64_t) {
        marks.collect(begin, end);
        counts[size_t(begin / kItemsPerTask) + 1] =
            countBits(words_.data() + begin / kWordBits, (end - begin + kWordBits - 1) / kWordBits);
    });
    std::partial_sum(counts.begin(), counts.end(), before_.begin());
}
}  // namespace rq

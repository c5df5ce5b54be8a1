#include <io/detail/weldPoints.h>

#include <array>
#include <atomic>
#include <bit>
#include <cstring>
#include <numeric>

#include <host/bas/Parallel.h>

namespace rq::io
{
namespace
{
// Looking up a corner costs some 20 ns.
constexpr int64_t kBlock = 4096;
constexpr int32_t kNone = -1;

using Position = std::array<float, 3>;

Position positionAt(const TriangleCorners &corners, int64_t corner)
{
    Position position;
    std::memcpy(position.data(), corners.at(corner), sizeof(position));
    return position;
}

bool isPlace(const Position &p) { return p[0] == p[0] && p[1] == p[1] && p[2] == p[2]; }

uint64_t hashOf(const Position &p)
{
    uint64_t hash = 0;
    for (const float value : p)
        // Adding 0 turns -0 into 0.
        hash = (hash ^ std::bit_cast<uint32_t>(value + 0.0f)) * 0x9e3779b97f4a7c15u;
    return hash;
}

/// Corners by place: a slot holds the smallest corner that anybody put into it.
class PlaceTable
{
public:
    explicit PlaceTable(const TriangleCorners &corners)
        : corners_(corners), bits_(int(std::bit_width(uint64_t(corners.size() + corners.size() / 2)))),
          slots_(size_t(1) << bits_, kNone)
    {}

    /// Put a corner in and return its slot.  Threads may put corners in together: which slot is found first may differ, but
    /// not which corners share one, nor which of them stays.
    uint32_t put(int64_t corner, const Position &position)
    {
        const size_t mask = slots_.size() - 1;
        for (size_t slot = size_t(hashOf(position) >> (64 - bits_));; slot = (slot + 1) & mask)
        {
            const std::atomic_ref<int32_t> entry(slots_[slot]);
            int32_t found = entry.load(std::memory_order_relaxed);
            if (found == kNone && entry.compare_exchange_strong(found, int32_t(corner), std::memory_order_relaxed))
                return uint32_t(slot);
            if (positionAt(corners_, found) != position)
                continue;
            while (found > corner && !entry.compare_exchange_weak(found, int32_t(corner), std::memory_order_relaxed))
            {}
            return uint32_t(slot);
        }
    }

    int32_t firstOf(uint32_t slot) const { return slots_[slot]; }

private:
    const TriangleCorners &corners_;
    int bits_;
    WeldedPoints::Values<int32_t> slots_;
};

// The first corner of the place of every corner.
WeldedPoints::Values<int32_t> findFirstCorners(const TriangleCorners &corners)
{
    PlaceTable table(corners);
    WeldedPoints::Values<uint32_t> slots(size_t(corners.size()));
    host::parallelFor(corners.size(), kBlock, [&](int64_t i) {
        const Position position = positionAt(corners, i);
        slots[size_t(i)] = isPlace(position) ? table.put(i, position) : 0;
    });
    WeldedPoints::Values<int32_t> first(size_t(corners.size()));
    host::parallelFor(corners.size(), kBlock, [&](int64_t i) {
        first[size_t(i)] = isPlace(positionAt(corners, i)) ? table.firstOf(slots[size_t(i)]) : int32_t(i);
    });
    return first;
}
}  // namespace

WeldedPoints weldPoints(const TriangleCorners &corners)
{
    const WeldedPoints::Values<int32_t> first = findFirstCorners(corners);
    const int64_t count = corners.size(), blocks = (count + kBlock - 1) / kBlock;
    const auto forEachFirst = [&](int64_t block, auto &&body) {
        for (int64_t i = block * kBlock; i < std::min(count, (block + 1) * kBlock); ++i)
        {
            if (first[size_t(i)] == i)
                body(i);
        }
    };
    std::vector<int64_t> before(size_t(blocks) + 1, 0);
    host::parallelFor(blocks, 1, [&](int64_t block) { forEachFirst(block, [&](int64_t) { ++before[size_t(block) + 1]; }); });
    std::partial_sum(before.begin(), before.end(), before.begin());

    WeldedPoints welded;
    welded.points.resize(size_t(count));
    welded.corners.resize(size_t(before.back()));
    host::parallelFor(blocks, 1, [&](int64_t block) {
        int64_t point = before[size_t(block)];
        forEachFirst(block, [&](int64_t corner) {
            welded.points[size_t(corner)] = int32_t(point);
            welded.corners[size_t(point++)] = int32_t(corner);
        });
    });
    host::parallelFor(count, kBlock, [&](int64_t i) {
        if (first[size_t(i)] != i)
            welded.points[size_t(i)] = welded.points[size_t(first[size_t(i)])];
    });
    return welded;
}
}  // namespace rq::io

#pragma once

#include <atomic>

#include <host/bas/CornerAdjacency.h>
#include <host/bas/hashBytes.h>
#include <rq/surface/detail/tangentInput.h>

namespace rq
{
/// Corners by what they hold, of equal ones the first.  Filled by any number of threads; what is found then does not depend
/// on their order.
class CornerTable
{
public:
    explicit CornerTable(int64_t corners)
        : slots_(std::bit_ceil(size_t(corners) * 4 / 3 + 1), kEmpty), mask_(slots_.size() - 1)
    {}

    static uint64_t hashOf(const TangentInput::Key &key)
    {
        uint64_t hash = 0x7A6;
        for (const uint64_t word : key.words)
            hash = host::hashWord(hash, word);
        return hash;
    }

    void prefetch(uint64_t hash) const { __builtin_prefetch(&slots_[hash & mask_], 1); }

    /// `isEqual(other)` compares with a corner that is in the table.  True when an equal one was there.
    template <class IsEqual> bool insert(uint64_t hash, int64_t corner, IsEqual &&isEqual)
    {
        const uint64_t own = wordOf(hash, corner);
        for (uint64_t at = hash & mask_;; at = (at + 1) & mask_)
        {
            std::atomic_ref<uint64_t> slot(slots_[at]);
            uint64_t word = slot.load(std::memory_order_relaxed);
            if (word == kEmpty && slot.compare_exchange_strong(word, own, std::memory_order_relaxed))
                return false;
            if (!isAlike(word, own) || !isEqual(cornerOf(word)))
                continue;
            while (own < word && !slot.compare_exchange_weak(word, own, std::memory_order_relaxed))
            {}
            return true;
        }
    }

    /// The first of the corners equal to one that was inserted.
    template <class IsEqual> int64_t find(uint64_t hash, IsEqual &&isEqual) const
    {
        const uint64_t own = wordOf(hash, 0);
        for (uint64_t at = hash & mask_;; at = (at + 1) & mask_)
            if (isAlike(slots_[at], own) && isEqual(cornerOf(slots_[at])))
                return cornerOf(slots_[at]);
    }

private:
    // A slot is the corner below and, so that few others need be looked at, the upper bits of its hash.
    static constexpr int kCornerBits = 40;
    static constexpr uint64_t kEmpty = ~uint64_t(0), kCornerMask = (uint64_t(1) << kCornerBits) - 1;

    static uint64_t wordOf(uint64_t hash, int64_t corner) { return (hash & ~kCornerMask) | uint64_t(corner); }
    static int64_t cornerOf(uint64_t word) { return int64_t(word & kCornerMask); }
    static bool isAlike(uint64_t a, uint64_t b) { return a != kEmpty && ((a ^ b) & ~kCornerMask) == 0; }

    std::vector<uint64_t, BAS_BlockAllocator<uint64_t>> slots_;
    uint64_t mask_;
};

/// Numbers for the corners of a mesh: equal ones for corners that agree in position, normal and texture.
template <class Topology> class WeldedCorners
{
    using Index = typename Topology::Index;
    using Adjacency = host::CornerAdjacency<Index>;

public:
    WeldedCorners(const TangentInput &input, const Topology &topology, const Adjacency &points)
        : input_(input), topology_(topology), ids_(size_t(topology.begin(topology.faces())))
    {
        const Count count = weldAroundPoints(points);
        const bool arePointsAlike = weldPoints(count.distinct);
        isOfPoints_ = !count.isSplit && !arePointsAlike;
        if (isOfPoints_)
            ids_ = {};
        else
            number();
    }

    /// Whether the points of the mesh are just these.
    bool isOfPoints() const { return isOfPoints_; }

    int64_t count() const { return count_; }
    const Index *ids() const { return ids_.data(); }

private:
    struct Count
    {
        int64_t distinct = 0;
        bool isSplit = false;
    };

    TangentInput::Key keyOf(int64_t corner) const { return input_.key(corner, topology_.point(corner)); }

    /// Give each corner the first one around its point that is equal to it.
    Count weldAroundPoints(const Adjacency &points)
    {
        constexpr int64_t kPointsPerBlock = 1024;
        const auto weld = [&](int64_t begin, int64_t end) {
            Count count;
            for (int64_t point = begin; point < end; ++point)
            {
                const int64_t distinct = weldAround(point, points.around(point), points.valence(point));
                count.distinct += distinct;
                count.isSplit |= distinct > 1;
            }
            return count;
        };
        return host::parallelReduce(points.points(), kPointsPerBlock, Count{}, weld, [](Count &into, const Count &from) {
            into.distinct += from.distinct;
            into.isSplit |= from.isSplit;
        });
    }

    int64_t weldAround(int64_t point, const Index *around, int64_t valence)
    {
        // Where a point has more kinds of corners than these, equal ones may pass for distinct until all points are welded.
        constexpr int64_t kKinds = 8;
        const bool areAlike = input_.isOfPoints();
        std::array<Index, kKinds> firsts;
        int64_t distinct = 0;
        for (int64_t i = 0; i < valence; ++i)
        {
            const int64_t kinds = std::min(distinct, kKinds);
            int64_t kind = 0;
            while (kind < kinds && !areAlike && !input_.areAlike(firsts[size_t(kind)], around[i], point))
                ++kind;
            ids_[size_t(around[i])] = kind < kinds ? firsts[size_t(kind)] : around[i];
            if (kind < kinds)
                continue;
            if (kind < kKinds)
                firsts[size_t(kind)] = around[i];
            ++distinct;
        }
        return distinct;
    }

    /// Give the first corners of the points the first one equal to them.  False when all differ.
    bool weldPoints(int64_t distinct)
    {
        // Hash and slot cost about 20 ns together when the slot is on its way while other hashes are computed.
        constexpr int64_t kCornersPerTask = 8192, kAhead = 32;
        CornerTable table(distinct);
        std::atomic<bool> areAlike = false;
        host::parallelForRange(int64_t(ids_.size()), kCornersPerTask, [&](int64_t begin, int64_t end) {
            std::array<std::pair<uint64_t, int64_t>, kAhead> pending;
            int64_t count = 0;
            const auto insertAll = [&] {
                for (int64_t i = 0; i < count; ++i)
                    if (const auto [hash, corner] = pending[size_t(i)]; table.insert(hash, corner, equalTo(corner)))
                        areAlike.store(true, std::memory_order_relaxed);
                count = 0;
            };
            for (int64_t corner = begin; corner < end; ++corner)
            {
                if (ids_[size_t(corner)] != corner)
                    continue;
                const uint64_t hash = CornerTable::hashOf(keyOf(corner));
                table.prefetch(hash);
                pending[size_t(count++)] = {hash, corner};
                if (count == kAhead)
                    insertAll();
            }
            insertAll();
        });
        if (!areAlike)
            return false;
        host::parallelFor(int64_t(ids_.size()), kCornersPerTask, [&](int64_t corner) {
            if (ids_[size_t(corner)] == corner)
                ids_[size_t(corner)] = Index(table.find(CornerTable::hashOf(keyOf(corner)), equalTo(corner)));
        });
        return true;
    }

    auto equalTo(int64_t corner) const
    {
        return [this, corner](int64_t other) { return keyOf(other) == keyOf(corner); };
    }

    /// Number the corners that stand for others; those come before the others, so one walk does.
    void number()
    {
        for (int64_t corner = 0; corner < int64_t(ids_.size()); ++corner)
        {
            const Index first = ids_[size_t(corner)];
            ids_[size_t(corner)] = first == corner ? Index(count_++) : ids_[size_t(first)];
        }
    }

    const TangentInput &input_;
    const Topology &topology_;
    std::vector<Index, BAS_BlockAllocator<Index>> ids_;
    int64_t count_ = 0;
    bool isOfPoints_ = false;
};
}  // namespace rq

#pragma once

#include <atomic>
#include <bit>
#include <numeric>
#include <type_traits>
#include <vector>

#include <host/bas/LargeBlocks.h>
#include <host/bas/Parallel.h>
#include <rq/surface/detail/Cells.h>

namespace rq
{
/// Finds the outer faces of cells: those of which no other cell has all points.
///
/// Cells with the same points count as one, and the first has its faces.  Faces that a cell has twice, and those that have
/// no area whatever their points, are none.
///
/// Every face goes, in the order of the cells, to the part of its lowest point, so that a part holds faces that lie near
/// each other in most meshes; within a part equal faces meet in a table that fits the cache.
///
/// Threads  everything runs in parallel, and the result has no trace of the threads
/// Cost     the time is linear in the number of cells; 8 bytes a face on the way, and twice that with 64-bit points
template <class Cells> class FaceMatching
{
public:
    using Point = typename Cells::Point;

    /// `points` is how many points there are, about: it only tells how to cut into parts.
    FaceMatching(const Cells &cells, int64_t points) : cells_(cells), outer_(size_t(cells.count()))
    {
        cut(points);
        fileFaces();
        host::parallelForRange(parts_, 1, [this](int64_t begin, int64_t end) {
            Table table;
            for (int64_t part = begin; part < end; ++part)
                match(part, table);
        });
    }

    /// A bit for each outer face of a cell.
    uint8_t outerFaces(int64_t cell) const { return outer_[size_t(cell)]; }

private:
    // A face is its cell's number times this, and its own.
    static constexpr int64_t kStride = Cells::kCorners;
    static_assert(Cells::kFaces <= kStride);
    using Id = std::conditional_t<sizeof(Point) == sizeof(int32_t), uint32_t, uint64_t>;
    static constexpr Id kNone = ~Id(0);
    static constexpr Id kInner = ~(kNone >> 1);  // beside the number of a face

    struct Record
    {
        uint32_t tag;  // equal for equal faces
        Id id;
    };
    using Table = std::vector<Id, BAS_BlockAllocator<Id>>;

    // A cell costs 10 ns in a pass; writing to many more parts at a time makes each write wait for its page.
    static constexpr int64_t kCellsPerBlock = 16384, kMostBlocks = 64;
    static constexpr int64_t kFacesPerPart = 2048, kMostParts = 4096;
    static constexpr int64_t kAhead = 16;  // cells in any order come from memory

    void cut(int64_t points)
    {
        perBlock_ = std::max(kCellsPerBlock, (cells_.count() + kMostBlocks - 1) / kMostBlocks);
        blocks_ = (cells_.count() + perBlock_ - 1) / perBlock_;
        const int64_t wanted = std::clamp<int64_t>(cells_.count() * Cells::kFaces / kFacesPerPart, 1, kMostParts);
        const int64_t last = std::max<int64_t>(0, points - 1);
        while (last >> shift_ >= wanted)
            ++shift_;
        parts_ = (last >> shift_) + 1;
    }

    // The part of a face.  A point that is none has one too.
    int64_t partOf(const std::array<Point, Cells::kFaceCorners> &face) const
    {
        Point lowest = face[0];
        for (const Point point : face)
            lowest = std::min(lowest, point);
        return int64_t(std::min(uint64_t(lowest) >> shift_, uint64_t(parts_ - 1)));
    }

    // Call `file(part, cell, face)` for every face of a block.
    template <class File> void forEachFace(int64_t block, File &&file) const
    {
        const int64_t end = std::min(cells_.count(), (block + 1) * perBlock_);
        for (int64_t cell = block * perBlock_; cell < end; ++cell)
            for (int face = 0; face < Cells::kFaces; ++face)
                file(partOf(Cells::face(cells_.corners(cell), face)), cell, face);
    }

    void fileFaces()
    {
        starts_.resize(size_t(parts_ * blocks_ + 1));
        host::parallelFor(blocks_, 1, [this](int64_t block) {
            std::vector<int64_t> counts(static_cast<size_t>(parts_));
            forEachFace(block, [&](int64_t part, int64_t, int) { ++counts[size_t(part)]; });
            for (int64_t part = 0; part < parts_; ++part)
                starts_[size_t(part * blocks_ + block) + 1] = counts[size_t(part)];
        });
        std::partial_sum(starts_.begin(), starts_.end(), starts_.begin());
        records_.resize(size_t(starts_.back()));
        host::parallelFor(blocks_, 1, [this](int64_t block) {
            std::vector<int64_t> places(static_cast<size_t>(parts_));
            for (int64_t part = 0; part < parts_; ++part)
                places[size_t(part)] = starts_[size_t(part * blocks_ + block)];
            std::array<Record, Cells::kFaces> ofCell;
            forEachFace(block, [&](int64_t part, int64_t cell, int face) {
                if (face == 0)
                    ofCell = recordsOf(cell);
                records_[size_t(places[size_t(part)]++)] = ofCell[size_t(face)];
            });
        });
    }

    static uint32_t scramble(Point point)
    {
        uint32_t bits = uint32_t(point);
        if constexpr (sizeof(Point) > sizeof(uint32_t))
            bits += uint32_t(uint64_t(point) >> 32) * 0x9E3779B1u;
        bits *= 0x85EBCA77u;
        bits ^= bits >> 15;
        bits *= 0xC2B2AE3Du;
        return bits ^ bits >> 13;
    }

    std::array<Record, Cells::kFaces> recordsOf(int64_t cell) const
    {
        const Point *points = cells_.corners(cell);
        std::array<uint32_t, Cells::kCorners> bits;
        for (int i = 0; i < Cells::kCorners; ++i)
            bits[size_t(i)] = scramble(points[i]);
        std::array<Record, Cells::kFaces> records;
        for (int face = 0; face < Cells::kFaces; ++face)
        {
            const auto ofFace = Cells::face(bits.data(), face);
            records[size_t(face)] = {std::accumulate(ofFace.begin(), ofFace.end(), 0u), Id(cell * kStride + face)};
        }
        if (Cells::isCollapsed(points))
            collapse(points, bits.data(), records);
        return records;
    }

    // The same for a cell with corners in one point: a face counts by the points that are left, however often it has them.
    static void collapse(const Point *points, const uint32_t *bits, std::array<Record, Cells::kFaces> &records)
    {
        for (int face = 0; face < Cells::kFaces; ++face)
        {
            Record &record = records[size_t(face)];
            const auto [corners, count] = Cells::outline(points, face);
            record.tag = 0;
            for (int i = 0; i < count; ++i)
                record.tag += bits[corners[size_t(i)]];
            if (count == 0)
                record.id = kNone;
            for (int other = 0; other < face && record.id != kNone; ++other)
                if (records[size_t(other)].id != kNone &&
                    Cells::areSame(Cells::face(points, other), Cells::face(points, face)))
                    records[size_t(other)].id = record.id = kNone;
        }
    }

    void match(int64_t part, Table &table)
    {
        Record *const records = records_.data() + starts_[size_t(part * blocks_)];
        const int64_t count = starts_[size_t((part + 1) * blocks_)] - starts_[size_t(part * blocks_)];
        // Most faces come twice, so that half of the table stays empty.
        const uint64_t mask = std::bit_ceil(uint64_t(count + count / 8 + 1)) - 1;
        table.assign(size_t(mask + 1), kNone);
        for (int64_t i = 0; i < count; ++i)
        {
            if (i + kAhead < count && records[i + kAhead].id != kNone)
                __builtin_prefetch(cells_.corners(cellOf(records[i + kAhead])));
            if (records[i].id != kNone)
                enter(records, i, table, mask);
        }
        for (int64_t i = 0; i < count; ++i)
            if (!(records[i].id & kInner))
                std::atomic_ref(outer_[size_t(cellOf(records[i]))])
                    .fetch_or(uint8_t(1 << records[i].id % kStride), std::memory_order_relaxed);
    }

    // Put a face into the table, or, where there is an equal one, tell that one.
    void enter(Record *records, int64_t i, Table &table, uint64_t mask) const
    {
        for (uint64_t at = records[i].tag & mask;; at = (at + 1) & mask)
        {
            if (table[at] == kNone)
            {
                table[at] = Id(i);
                return;
            }
            Record &first = records[table[at]];
            if (first.tag != records[i].tag || !Cells::areSame(pointsOf(first), pointsOf(records[i])))
                continue;
            if (!(first.id & kInner) && !cells_.areSame(cellOf(first), cellOf(records[i])))
                first.id |= kInner;
            records[i].id = kNone;
            return;
        }
    }

    static int64_t cellOf(const Record &record) { return int64_t(record.id & ~kInner) / kStride; }
    auto pointsOf(const Record &record) const
    {
        return Cells::face(cells_.corners(cellOf(record)), int((record.id & ~kInner) % kStride));
    }

    const Cells &cells_;
    std::vector<uint8_t> outer_;
    int64_t perBlock_ = 0, blocks_ = 0, parts_ = 0;
    int shift_ = 0;
    std::vector<int64_t> starts_;  // in the records, of each part by blocks, and behind the last
    std::vector<Record, BAS_BlockAllocator<Record>> records_;
};
}  // namespace rq

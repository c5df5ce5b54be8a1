#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <vector>

#include <host/bas/LargeBlocks.h>
#include <host/bas/Parallel.h>

namespace host
{
/// The corners around each point of a mesh, in vertex-list order, and the way back from a corner to its face.
///
/// Shape  point p is used by corners[starts[p]] .. corners[starts[p + 1] - 1]; `Index` holds the number of corners
/// Cost   one counting sort: two passes over the vertex list, in parallel; the order never depends on the threads.  While it
///        is built, every worker but one keeps a count of its own for each point.
template <class Index> class CornerAdjacency
{
public:
    /// `topology` offers `faces()`, `begin(face)`, `end(face)` (corner positions) and `point(corner)` in [0, points).
    template <class Topology>
    CornerAdjacency(int64_t points, const Topology &topology)
        : starts_(size_t(points) + 1), corners_(size_t(topology.begin(topology.faces())))
    {
        sortCorners(topology);
        noteFaces(topology);
    }

    int64_t points() const { return int64_t(starts_.size()) - 1; }

    /// Number of corners around a point, and the corners.
    int64_t valence(int64_t point) const { return starts_[size_t(point) + 1] - starts_[size_t(point)]; }
    const Index *around(int64_t point) const { return corners_.data() + starts_[size_t(point)]; }

    /// The face of a corner; the topology must be the one that this was made from.
    template <class Topology> int64_t faceOf(const Topology &topology, int64_t corner) const
    {
        if (faceOfBlock_.empty())
            return quotient(corner);
        int64_t face = faceOfBlock_[size_t(corner / kCornersPerBlock)];
        while (topology.end(face) <= corner)
            ++face;
        return face;
    }

    /// Call `visit(faceOf)` with the quickest way from a corner to its face.
    template <class Topology, class Visit> void visitFaces(const Topology &topology, Visit &&visit) const
    {
        if (faceOfBlock_.empty() && std::has_single_bit(faceSize_))
            visit([shift = std::countr_zero(faceSize_)](int64_t corner) { return corner >> shift; });
        else
            visit([this, &topology](int64_t corner) { return faceOf(topology, corner); });
    }

    int64_t memoryUsage() const
    {
        return int64_t(sizeof(*this) + (starts_.size() + corners_.size() + faceOfBlock_.size()) * sizeof(Index));
    }

private:
    using Row = std::vector<Index, BAS_BlockAllocator<Index>>;

    // A step on the way from a block's first face to a corner's face costs about a nanosecond.
    static constexpr int64_t kCornersPerBlock = 16;

    // Counting costs about 2 ns a corner, so a worker has at least 100 us of work.
    static constexpr int64_t kCornersPerWorker = 65536;
    static constexpr int64_t kMostWorkers = 8;

    // A corner divided by the corners of each face.  Exact as long as their product is below 2^64 (Granlund and Montgomery,
    // "Division by invariant integers using multiplication", 1994).
    int64_t quotient(int64_t corner) const
    {
        __extension__ using Wide = unsigned __int128;
        return inverse_ ? int64_t(uint64_t(Wide(uint64_t(corner)) * inverse_ >> 64)) : corner;
    }

    template <class Topology> void sortCorners(const Topology &topology)
    {
        const int64_t count = int64_t(corners_.size());
        const int64_t available = BAS_Threads::enabled() ? std::min<int64_t>(BAS_Threads::processors(), kMostWorkers) : 1;
        const int64_t workers = std::clamp<int64_t>(count / kCornersPerWorker, 1, available);
        // The last worker leaves behind where the corners of each point end, which is where those of the next one start.
        const size_t points = starts_.size() - 1;
        std::vector<Row> rows(size_t(workers - 1), Row(points));
        std::vector<Index *> cursors;
        for (Row &row : rows)
            cursors.push_back(row.data());
        cursors.push_back(starts_.data() + 1);
        const auto eachCorner = [&](auto &&visit) {
            parallelFor(workers, 1, [&](int64_t worker) {
                Index *cursor = cursors[size_t(worker)];
                for (int64_t corner = worker * count / workers; corner < (worker + 1) * count / workers; ++corner)
                    visit(cursor[topology.point(corner)], corner);
            });
        };
        for (Index *cursor : cursors)
            std::fill_n(cursor, points, Index(0));
        eachCorner([](Index &cursor, int64_t) { ++cursor; });

        // The corners of one point lie side by side, those of the first worker first.
        Index sum = 0;
        for (size_t point = 0; point < points; ++point)
            for (Index *cursor : cursors)
            {
                const Index own = cursor[point];
                cursor[point] = sum;
                sum += own;
            }
        starts_[0] = 0;
        eachCorner([this](Index &cursor, int64_t corner) { corners_[size_t(cursor++)] = Index(corner); });
    }

    template <class Topology> void noteFaces(const Topology &topology)
    {
        const int64_t faces = topology.faces();
        const int64_t count = int64_t(corners_.size());
        const int64_t size = faces > 0 ? topology.end(0) - topology.begin(0) : 1;
        faceSize_ = uint64_t(size);
        inverse_ = size > 1 ? ~uint64_t(0) / uint64_t(size) + 1 : 0;
        int64_t face = 0;
        while (face < faces && topology.begin(face) == face * size)
            ++face;
        if (face == faces && count == faces * size)
            return;
        faceOfBlock_.resize(size_t((count + kCornersPerBlock - 1) / kCornersPerBlock));
        face = 0;
        for (size_t block = 0; block < faceOfBlock_.size(); ++block)
        {
            while (topology.end(face) <= int64_t(block) * kCornersPerBlock)
                ++face;
            faceOfBlock_[block] = Index(face);
        }
    }

    Row starts_;
    Row corners_;
    Row faceOfBlock_;        // of every 16th corner; empty when all faces have the same number of corners
    uint64_t faceSize_ = 1;  // when they have: that number
    uint64_t inverse_ = 0;   // of that number, as a fraction of 2^64, rounded up; 0 stands for 1
};
}  // namespace host

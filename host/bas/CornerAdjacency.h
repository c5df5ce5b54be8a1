#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <vector>

#include <host/bas/LargeBlocks.h>
#include <host/bas/Parallel.h>

namespace host
{
/// The corners around each point of a mesh, in vertex-list order.
///
/// Shape  point p is used by corners[starts[p]] .. corners[starts[p + 1] - 1]; `Index` holds the number of corners
/// Cost   one counting sort: two passes over the vertex list, in parallel; the order never depends on the threads
template <class Index> struct CornerAdjacency
{
    using Row = std::vector<Index, BAS_BlockAllocator<Index>>;

    Row starts;
    Row corners;

    /// `pointOf(corner)` names the point of a corner; it must lie in [0, points).
    template <class PointOf>
    CornerAdjacency(int64_t points, int64_t cornerCount, PointOf &&pointOf)
        : starts(size_t(points) + 1), corners(size_t(cornerCount))
    {
        // A count costs about 2 ns here, so a piece is some 30 us of work.
        constexpr int64_t kCornersPerTask = 16384;
        const auto cursor = [this](int64_t point) { return std::atomic_ref<Index>(starts[size_t(point)]); };

        parallelForRange(points + 1, kCornersPerTask, [&](int64_t begin, int64_t end) {
            std::fill(starts.begin() + begin, starts.begin() + end, Index(0));
        });
        parallelFor(cornerCount, kCornersPerTask,
                    [&](int64_t corner) { cursor(pointOf(corner)).fetch_add(1, std::memory_order_relaxed); });

        // Each cursor becomes the end of its point's run and walks down to its start while the run is filled.
        Index sum = 0;
        for (Index &start : starts)
            start = sum += start;
        parallelFor(cornerCount, kCornersPerTask, [&](int64_t corner) {
            corners[size_t(cursor(pointOf(corner)).fetch_sub(1, std::memory_order_relaxed)) - 1] = Index(corner);
        });
        parallelFor(points, kCornersPerTask, [&](int64_t point) {
            std::sort(corners.begin() + starts[size_t(point)], corners.begin() + starts[size_t(point) + 1]);
        });
    }
};
}  // namespace host

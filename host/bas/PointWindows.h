#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

#include <host/bas/LargeBlocks.h>
#include <host/bas/Parallel.h>

namespace host
{
/// The least and the greatest of some points; 0 for none.
struct PointSpan
{
    int64_t first, last;
};
HOST_API PointSpan spanOf(const int32_t *points, int64_t count);
HOST_API PointSpan spanOf(const int64_t *points, int64_t count);

/// Runs of points, and the blocks of neighbouring faces that use any point of each: whoever adds up what faces give to their
/// points can take one run at a time, with all faces of a point in order, and needs no list of the faces around a point.
///
/// A mesh whose faces come in the order of its points, as most do, has each block in one window, seldom two.
class PointWindows
{
public:
    /// Windows over points [0, points); blocks are `facesPerBlock` faces each.  `topology` offers the array
    /// `points` of its corners.
    template <class Topology>
    PointWindows(int64_t points, const Topology &topology, int64_t facesPerBlock)
        : points_(points), spans_(size_t((topology.faces() + facesPerBlock - 1) / facesPerBlock))
    {
        const int64_t blocks = int64_t(spans_.size());
        parallelFor(blocks, kBlocksPerTask, [&](int64_t block) {
            const int64_t lastFace = std::min((block + 1) * facesPerBlock, topology.faces());
            const int64_t begin = topology.begin(block * facesPerBlock);
            spans_[size_t(block)] = spanOf(topology.points + begin, topology.end(lastFace - 1) - begin);
        });
        size_ = std::clamp<int64_t>(points / (kWindowsPerWorker * BAS_Threads::processors()), kLeastPoints, kMostPoints);
        if (entries() <= 2 * blocks + kFewEntries)
            listBlocks();
    }

    /// Whether neighbouring faces use neighbouring points.  Without locality there are no windows, since each would have to
    /// look at most blocks.
    bool hasLocality() const { return points_ == 0 || count() > 0; }

    /// Make one window of all points, which is as good for a single worker.
    void unite()
    {
        size_ = std::max<int64_t>(points_, 1);
        listBlocks();
    }

    int64_t count() const { return int64_t(starts_.size()) - 1; }

    /// The points of a window.
    int64_t first(int64_t window) const { return window * size_; }
    int64_t last(int64_t window) const { return std::min((window + 1) * size_, points_); }

    /// Whether a block uses points of this window only.
    bool contains(int64_t window, int64_t block) const
    {
        const PointSpan &span = spans_[size_t(block)];
        return first(window) <= span.first && span.last < last(window);
    }

    /// Its blocks, in order.
    std::span<const int64_t> blocks(int64_t window) const
    {
        return {blocks_.data() + starts_[size_t(window)], blocks_.data() + starts_[size_t(window) + 1]};
    }

private:
    // A block of 64 quads takes a microsecond or two to work out, and 100 ns to look through.
    static constexpr int64_t kBlocksPerTask = 256;
    static constexpr int64_t kFewEntries = 64;
    static constexpr int64_t kWindowsPerWorker = 8;
    static constexpr int64_t kLeastPoints = 4096;
    static constexpr int64_t kMostPoints = 65536;

    template <class T> using Row = std::vector<T, BAS_BlockAllocator<T>>;

    int64_t entries() const
    {
        int64_t sum = 0;
        for (const PointSpan &span : spans_)
            sum += span.last / size_ - span.first / size_ + 1;
        return sum;
    }

    void listBlocks()
    {
        const size_t windows = size_t((points_ + size_ - 1) / size_);
        starts_.assign(windows + 1, 0);
        const auto eachEntry = [&](auto &&visit) {
            for (size_t block = 0; block < spans_.size(); ++block)
                for (int64_t window = spans_[block].first / size_;
                     window <= spans_[block].last / size_ && size_t(window) < windows; ++window)
                    visit(size_t(window), int64_t(block));
        };
        eachEntry([this](size_t window, int64_t) { ++starts_[window + 1]; });
        for (size_t window = 0; window < windows; ++window)
            starts_[window + 1] += starts_[window];
        blocks_.resize(starts_.back());
        std::vector<size_t> places = starts_;
        eachEntry([&](size_t window, int64_t block) { blocks_[places[window]++] = block; });
    }

    int64_t points_;
    Row<PointSpan> spans_;
    int64_t size_ = 1;  // points of a window
    std::vector<size_t> starts_ = {0};
    Row<int64_t> blocks_;
};
}  // namespace host

#include <rq/surface/detail/SurfaceBlocks.h>

#include <algorithm>
#include <atomic>

#include <host/bas/Parallel.h>

rq::LevelField::~LevelField() = default;

namespace
{
using rq::Index3;

// Some sixty faces each: two gigabytes when all are done.  The lists of parts may take half of one.
constexpr int64_t kMostBlocks = int64_t(1) << 18;
constexpr int64_t kMostParts = int64_t(1) << 27;

// Looking at eight halves costs a microsecond and more.
constexpr int64_t kNodesPerTask = 32;

/// The samples of a node that is `blocks` blocks wide; those past the grid are looked at too.
rq::SampleBox samplesOf(const Index3 &at, int32_t blocks)
{
    rq::SampleBox box;
    for (size_t axis = 0; axis < 3; ++axis)
    {
        box.first[axis] = at[axis] * blocks * rq::kBlockCells;
        box.last[axis] = box.first[axis] + blocks * rq::kBlockCells;
    }
    return box;
}

/// One halving of all nodes.
class Halving
{
public:
    /// `blocks`: how wide the halves are.
    Halving(const rq::LevelField &field, const rq::SurfaceGrid &grid, const rq::SurfaceBlocks &nodes, int32_t blocks)
        : field_(field), grid_(grid), nodes_(nodes), blocks_(blocks)
    {}

    /// False when they are too many.
    bool run(rq::SurfaceBlocks &halves)
    {
        halves = host::parallelReduce(
            nodes_.size(), kNodesPerTask, rq::SurfaceBlocks(),
            [&](int64_t begin, int64_t end) {
                rq::SurfaceBlocks found;
                for (int64_t node = begin; node < end && isFew(); ++node)
                    halve(node, found);
                return found;
            },
            [](rq::SurfaceBlocks &into, const rq::SurfaceBlocks &from) { into.append(from); });
        return isFew();
    }

private:
    bool isFew() const { return count_ <= kMostBlocks && parts_ <= kMostParts; }

    void halve(int64_t node, rq::SurfaceBlocks &found)
    {
        for (int corner = 0; corner < 8; ++corner)
        {
            Index3 at;
            bool isInGrid = true;
            for (size_t axis = 0; axis < 3; ++axis)
            {
                at[axis] = 2 * nodes_.at[size_t(node)][axis] + (corner >> axis & 1);
                isInGrid = isInGrid && int64_t(at[axis]) * blocks_ * rq::kBlockCells < grid_.cells[axis];
            }
            const size_t before = found.parts.size();
            if (!isInGrid || !field_.narrow(samplesOf(at, blocks_), nodes_.partsOf(node), found.parts))
                continue;
            found.at.push_back(at);
            found.partEnds.push_back(int64_t(found.parts.size()));
            ++count_;
            parts_ += int64_t(found.parts.size() - before);
        }
    }

    const rq::LevelField &field_;
    const rq::SurfaceGrid &grid_;
    const rq::SurfaceBlocks &nodes_;
    int32_t blocks_;
    std::atomic<int64_t> count_{0}, parts_{0};
};
}  // namespace

void rq::SurfaceBlocks::append(const SurfaceBlocks &following)
{
    const int64_t before = int64_t(parts.size());
    at.insert(at.end(), following.at.begin(), following.at.end());
    parts.insert(parts.end(), following.parts.begin(), following.parts.end());
    for (const int64_t end : following.partEnds)
        partEnds.push_back(before + end);
}

bool rq::findSurfaceBlocks(const LevelField &field, const SurfaceGrid &grid, SurfaceBlocks &blocks)
{
    const int32_t cells = *std::max_element(grid.cells.begin(), grid.cells.end());
    int32_t width = 1;
    while (int64_t(width) * kBlockCells < cells)
        width *= 2;
    blocks = SurfaceBlocks();
    blocks.parts = field.allParts();
    blocks.at.push_back({0, 0, 0});
    blocks.partEnds.push_back(int64_t(blocks.parts.size()));
    for (; width > 1 && blocks.size() > 0; width /= 2)
    {
        SurfaceBlocks halves;
        if (!Halving(field, grid, blocks, width / 2).run(halves))
            return false;
        blocks = std::move(halves);
    }
    return true;
}

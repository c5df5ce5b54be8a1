#pragma once

#include <rq/surface/detail/LevelField.h>

namespace rq
{
/// The blocks of a grid that a surface may pass through, and the parts of the field that matter in each.
struct SurfaceBlocks
{
    std::vector<Index3> at;         ///< the block's number along each axis
    std::vector<int64_t> partEnds;  ///< running totals
    std::vector<int32_t> parts;

    int64_t size() const { return int64_t(at.size()); }
    LevelField::Parts partsOf(int64_t block) const
    {
        const int64_t begin = block > 0 ? partEnds[size_t(block - 1)] : 0;
        return {parts.data() + begin, size_t(partEnds[size_t(block)] - begin)};
    }
    void append(const SurfaceBlocks &following);
};

/// Find the blocks by halving the grid again and again, dropping what lies on one side of the surface (see Duff, "Interval
/// Arithmetic and Recursive Subdivision for Implicit Functions and Constructive Solid Geometry", SIGGRAPH 1992): the cost
/// goes with the surface, not with the space around it.
///
/// Threads  runs in parallel; the order of the blocks is fixed
/// Failure  false when there are more blocks, or parts in all of them, than memory should be spent on
bool findSurfaceBlocks(const LevelField &field, const SurfaceGrid &grid, SurfaceBlocks &blocks);
}  // namespace rq

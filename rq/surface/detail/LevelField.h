#pragma once

#include <array>
#include <span>
#include <vector>

#include <host/bas/Vector.h>

namespace rq
{
/// One number for each axis: of a sample, a cell or a block.
using Index3 = std::array<int32_t, 3>;

/// A regular grid in space: sample i, j, k lies at `origin` + `cell` * (i, j, k).
struct SurfaceGrid
{
    BAS_Vec3d origin{0.0};
    double cell = 1.0;
    Index3 cells = {0, 0, 0};
};

/// Cells are looked at in blocks of this many along each axis.
constexpr int32_t kBlockCells = 8;
constexpr int32_t kBlockSamples = kBlockCells + 1;

/// The samples of a block with its far sides, x fastest.
using BlockValues = std::array<double, kBlockSamples * kBlockSamples * kBlockSamples>;

/// Samples from `first` to `last` along each axis, both included.
struct SampleBox
{
    Index3 first, last;
};

/// A function on a grid whose zero set is a surface: positive inside of it.
///
/// The function is made of parts that reach some of the space only, so that what looks at a piece of space need not know all
/// of them.  Along the outer sides of the grid it must not be positive.
///
/// Threads  immutable, asked from several threads
class LevelField
{
public:
    using Parts = std::span<const int32_t>;

    virtual ~LevelField();

    /// The numbers of all parts, increasing.
    virtual std::vector<int32_t> allParts() const = 0;

    /// Append those of `parts` that matter for the samples of a box to `kept`.  False, with nothing appended, when all of
    /// the box is certain to lie on one side; a sample has the same value whatever box it is seen in.
    virtual bool narrow(const SampleBox &box, Parts parts, std::vector<int32_t> &kept) const = 0;

    /// The samples of a block, the first of which is given.
    virtual void sample(const Index3 &first, Parts parts, BlockValues &values) const = 0;

    /// The values at some places anywhere, which are counted from the grid's origin: so many make a slope.
    using Places = std::array<BAS_Vec3d, 4>;
    virtual std::array<double, 4> at(const Places &places, Parts parts) const = 0;
};
}  // namespace rq

#include <rq/surface/detail/BlockSurface.h>

#include <algorithm>
#include <bit>
#include <cmath>

namespace
{
// Points keep this much of a cell away from its corners, so that no two come to lie on one another.
constexpr double kCornerGap = 1e-3;

// In cells: far above what rounding does to differences, far below what bends the field.
constexpr double kDifferenceStep = 1e-5;

// In cells: a step that goes further is no better than the straight line was.
constexpr double kLongestStep = 0.25;
}  // namespace

void rq::BlockSurface::make(const LevelField &field, const SurfaceGrid &grid, const Index3 &first, LevelField::Parts parts)
{
    BlockValues values;
    field.sample(first, parts, values);
    for (size_t i = 0; i < values.size(); ++i)
        inside_[i] = values[i] > 0.0;
    if (inside_.none() || inside_.all())
        return;
    findCrossings();
    countFaces();
    placePoints(field, grid, first, parts, values);
}

void rq::BlockSurface::findCrossings()
{
    int32_t count = 0;
    for (int axis = 0; axis < 3; ++axis)
        for (int z = 0; z < kBlockCells; ++z)
        {
            uint64_t &bits = crossing_[axis][z];
            for (int y = 0; y < kBlockCells; ++y)
                for (int x = 0; x < kBlockCells; ++x)
                {
                    const bool differs =
                        inside_[sampleAt(x, y, z)] != inside_[sampleAt(x + (axis == 0), y + (axis == 1), z + (axis == 2))];
                    bits |= uint64_t(differs) << (kBlockCells * y + x);
                }
            before_[axis][z] = count;
            count += std::popcount(bits);
        }
}

void rq::BlockSurface::countFaces()
{
    for (int z = 0; z < kBlockCells; ++z)
        for (int y = 0; y < kBlockCells; ++y)
            for (int x = 0; x < kBlockCells; ++x)
            {
                const CubeLoops &cut = loops(x, y, z);
                faces_ += cut.loops;
                corners_ += cut.corners;
            }
}

// The straight line between the samples gives a first guess, and one step of Newton's method up or down the slope takes it
// to the surface, up to the fourth power of the cell.  The slope is the normal as well.
void rq::BlockSurface::placePoints(const LevelField &field, const SurfaceGrid &grid, const Index3 &first,
                                   LevelField::Parts parts, const BlockValues &values)
{
    const double step = kDifferenceStep * grid.cell;
    for (int axis = 0; axis < 3; ++axis)
        for (int z = 0; z < kBlockCells; ++z)
            for (uint64_t left = crossing_[axis][z]; left; left &= left - 1)
            {
                const int bit = std::countr_zero(left), x = bit % kBlockCells, y = bit / kBlockCells;
                const double near = values[sampleAt(x, y, z)];
                const double far = values[sampleAt(x + (axis == 0), y + (axis == 1), z + (axis == 2))];
                BAS_Vec3d offset = BAS_Vec3d(first[0] + x, first[1] + y, first[2] + z) * grid.cell;
                offset[axis] += std::clamp(near / (near - far), kCornerGap, 1.0 - kCornerGap) * grid.cell;

                const double value = field.at(offset, parts);
                BAS_Vec3d slope;
                for (int along = 0; along < 3; ++along)
                {
                    BAS_Vec3d beside = offset;
                    beside[along] += step;
                    slope[along] = (field.at(beside, parts) - value) / step;
                }
                if (const double steepness = slope.length(); std::abs(value) < kLongestStep * grid.cell * steepness)
                    offset -= slope * (value / (steepness * steepness));
                positions_.push_back(BAS_Vec3f(grid.origin + offset));
                normals_.push_back(BAS_Vec3f((-slope).normalized()));
            }
}

const rq::CubeLoops &rq::BlockSurface::loops(int x, int y, int z) const
{
    unsigned corners = 0;
    for (int c = 0; c < 8; ++c)
        corners |= unsigned(inside_[sampleAt(x + (c & 1), y + (c >> 1 & 1), z + (c >> 2))]) << c;
    return cubeLoops()[corners];
}

int32_t rq::BlockSurface::pointOf(int axis, int x, int y, int z) const
{
    const uint64_t earlier = (uint64_t(1) << (kBlockCells * y + x)) - 1;
    return before_[axis][z] + std::popcount(crossing_[axis][z] & earlier);
}

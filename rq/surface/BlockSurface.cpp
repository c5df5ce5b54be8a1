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
    if (!findInside(values))
        return;
    findCrossings();
    countFaces();
    placePoints(field, grid, first, parts, values);
}

/// False when all samples lie on one side.
bool rq::BlockSurface::findInside(const BlockValues &values)
{
    int count = 0;
    for (int z = 0; z < kBlockSamples; ++z)
        for (int y = 0; y < kBlockSamples; ++y)
        {
            unsigned row = 0;
            for (int x = 0; x < kBlockSamples; ++x)
                row |= unsigned(values[sampleAt(x, y, z)] > 0.0) << x;
            inside_[z][y] = uint16_t(row);
            count += std::popcount(row);
        }
    return count > 0 && count < int(values.size());
}

void rq::BlockSurface::findCrossings()
{
    constexpr unsigned kRow = (1u << kBlockCells) - 1;
    int64_t count = 0;
    for (int axis = 0; axis < 3; ++axis)
        for (int z = 0; z < kBlockCells; ++z)
        {
            uint64_t bits = 0;
            for (int y = 0; y < kBlockCells; ++y)
            {
                const unsigned row = inside_[z][y];
                const unsigned next = axis == 0 ? row >> 1 : axis == 1 ? inside_[z][y + 1] : inside_[z + 1][y];
                bits |= uint64_t((row ^ next) & kRow) << (kBlockCells * y);
            }
            layers_[axis][z] = {bits, count};
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
            for (uint64_t left = layers_[axis][z].cut; left; left &= left - 1)
            {
                const int bit = std::countr_zero(left), x = bit % kBlockCells, y = bit / kBlockCells;
                const double near = values[sampleAt(x, y, z)];
                const double far = values[sampleAt(x + (axis == 0), y + (axis == 1), z + (axis == 2))];
                BAS_Vec3d offset = BAS_Vec3d(first[0] + x, first[1] + y, first[2] + z) * grid.cell;
                // Between infinite samples any place is as good.
                const double share = near / (near - far);
                offset[axis] += std::clamp(share == share ? share : 0.5, kCornerGap, 1.0 - kCornerGap) * grid.cell;

                LevelField::Places places = {offset, offset, offset, offset};
                for (int along = 0; along < 3; ++along)
                    places[size_t(along) + 1][along] += step;
                const auto [value, besideX, besideY, besideZ] = field.at(places, parts);
                const BAS_Vec3d slope = BAS_Vec3d(besideX - value, besideY - value, besideZ - value) / step;
                if (const double steepness = slope.length(); std::abs(value) < kLongestStep * grid.cell * steepness)
                    offset -= slope * (value / (steepness * steepness));
                positions_.push_back(BAS_Vec3f(grid.origin + offset));
                normals_.push_back(BAS_Vec3f((-slope).normalized()));
            }
}

const rq::CubeLoops &rq::BlockSurface::loops(int x, int y, int z) const
{
    const auto pair = [&](int j, int k) { return unsigned(inside_[z + k][y + j]) >> x & 3; };
    const unsigned corners = pair(0, 0) | pair(1, 0) << 2 | pair(0, 1) << 4 | pair(1, 1) << 6;
    return cubeLoops()[corners];
}

int32_t rq::BlockSurface::pointOf(int axis, int x, int y, int z) const
{
    const uint64_t earlier = (uint64_t(1) << (kBlockCells * y + x)) - 1;
    const Layer &layer = layers_[axis][z];
    return int32_t(layer.before + std::popcount(layer.cut & earlier));
}

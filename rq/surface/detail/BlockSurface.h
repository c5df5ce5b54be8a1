#pragma once

#include <rq/surface/detail/CubeLoops.h>
#include <rq/surface/detail/LevelField.h>

namespace rq
{
/// The surface within one block: which samples are inside, and the points on those edges of the grid that begin in the
/// block's cells.  Edges on its far sides belong to its neighbours.
class BlockSurface
{
public:
    /// `first` is the first sample of the block.
    void make(const LevelField &field, const SurfaceGrid &grid, const Index3 &first, LevelField::Parts parts);

    int64_t points() const { return int64_t(positions_.size()); }
    const std::vector<BAS_Vec3f> &positions() const { return positions_; }
    const std::vector<BAS_Vec3f> &normals() const { return normals_; }

    int64_t faces() const { return faces_; }
    int64_t corners() const { return corners_; }

    /// How the surface cuts a cell.
    const CubeLoops &loops(int x, int y, int z) const;

    /// The point on an edge that begins at a sample of the block and is cut, counted within the block.
    int32_t pointOf(int axis, int x, int y, int z) const;

private:
    static size_t sampleAt(int x, int y, int z) { return size_t((z * kBlockSamples + y) * kBlockSamples + x); }
    bool findInside(const BlockValues &values);
    void findCrossings();
    void countFaces();
    void placePoints(const LevelField &field, const SurfaceGrid &grid, const Index3 &first, LevelField::Parts parts,
                     const BlockValues &values);

    uint16_t inside_[kBlockSamples][kBlockSamples] = {};  // of the rows of each layer, a bit for each sample
    // The edges along an axis from a layer of samples.
    struct Layer
    {
        uint64_t cut = 0;    // a bit for each
        int64_t before = 0;  // points on edges that come before
    };
    Layer layers_[3][kBlockCells];
    std::vector<BAS_Vec3f> positions_, normals_;
    int64_t faces_ = 0, corners_ = 0;
};
}  // namespace rq

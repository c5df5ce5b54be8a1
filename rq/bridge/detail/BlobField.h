#pragma once

#include <rq/bridge/detail/BlobShape.h>
#include <rq/bridge/detail/BlobTree.h>
#include <rq/prim/TransformArray.h>
#include <rq/surface/detail/LevelField.h>

namespace rq
{
/// The field of metaballs less the level at which their surface is.
///
/// Its parts are the nodes of the tree that are not zero all over.  Each passes its value on to the expressions that it is a
/// child of; a child that does not reach a place counts as zero there.
class BlobField final : public LevelField
{
public:
    /// Where the field of a single blob of weight 1 is half of its middle's, as with Wyvill, McPheeters and Wyvill, "Data
    /// structure for soft objects" (The Visual Computer, 1986).
    static constexpr double kLevel = 0.5;

    /// The blobs as their transforms' first segment places them.
    BlobField(const BlobTree &tree, const RQ_TransformArray &placements);

    /// Lay a grid of at least `density` cells across the thickness of the blobs, that of their geometric mean, and of at
    /// most `mostDivisions` along any side of the whole.  False without a blob that could have a surface.
    bool layGrid(double density, int64_t mostDivisions);

    /// The same grid with cells twice as wide.  False when it is no finer than a block.
    bool coarsen();

    const SurfaceGrid &grid() const { return grid_; }

    std::vector<int32_t> allParts() const override;
    bool narrow(const SampleBox &box, Parts parts, std::vector<int32_t> &kept) const override;
    void sample(const Index3 &first, Parts parts, BlockValues &values) const override;
    std::array<double, 4> at(const Places &places, Parts parts) const override;

    /// Call `visit(row among all blobs, field)` for those of the parts whose own field is positive at a point.
    template <class Visit> void visitBlobs(const BAS_Vec3d &offset, Parts parts, Visit &&visit) const
    {
        for (const int32_t part : parts)
            if (const int32_t row = nodes_[size_t(part)].shape; row >= 0)
                if (const double value = shapes_[size_t(row)].blob.at(offset - shapes_[size_t(row)].middle); value > 0.0)
                    visit(int64_t(row), value);
    }

private:
    struct Node
    {
        int32_t shape = -1;  // the row among all blobs; -1: an expression
        int32_t operation = MSH_BLOB_SUM;
        int32_t children = 0;
        std::vector<int32_t> parents{};
    };
    struct Shape
    {
        BlobShape blob;
        BAS_Vec3d middle{0.0};  // from the grid's origin
        SampleBox reach{};      // the samples that it can be seen at
    };

    template <class Value, class ValueOf> Value evaluate(Parts parts, ValueOf &&valueOf) const;
    void setGrid(double cell);
    void addSamples(const Shape &shape, const Index3 &first, const Index3 &sides, double *values) const;

    std::vector<Node> nodes_;
    bool isSum_ = true;  // there is no expression but the whole
    std::vector<Shape> shapes_;
    BAS_Vec3d low_{0.0}, high_{0.0};  // of all blobs that could have a surface
    SurfaceGrid grid_;
};
}  // namespace rq

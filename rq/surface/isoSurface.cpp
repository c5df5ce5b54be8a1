#include <rq/surface/detail/isoSurface.h>

#include <unordered_map>

#include <host/bas/Parallel.h>
#include <host/bas/Progress.h>
#include <rq/data/DANumeric.h>
#include <rq/surface/detail/BlockSurface.h>

namespace
{
using rq::BlockSurface;
using rq::Index3;
using rq::kBlockCells;

// A block costs some ten microseconds and more.
constexpr int64_t kBlocksPerTask = 4;

uint64_t keyOf(const Index3 &at)
{
    constexpr int kBits = 21;
    return (uint64_t(at[2]) << kBits | uint64_t(at[1])) << kBits | uint64_t(at[0]);
}

/// Makes the arrays of a mesh from the surfaces of its blocks.
class Assembly
{
public:
    Assembly(const rq::SurfaceBlocks &blocks, const std::vector<BlockSurface> &surfaces)
        : blocks_(blocks), surfaces_(surfaces)
    {
        for (int64_t block = 0; block < blocks.size(); ++block)
        {
            numbers_.emplace(keyOf(blocks.at[size_t(block)]), block);
            const BlockSurface &surface = surfaces[size_t(block)];
            points_.push_back(points_.back() + surface.points());
            faces_.push_back(faces_.back() + surface.faces());
            corners_.push_back(corners_.back() + surface.corners());
        }
    }

    RQ_PolygonMeshHandle mesh() const
    {
        if (faces_.back() == 0)
            return nullptr;
        const auto positions = numbers<float>(points_.back(), 3, RQ_TYPE_POINT);
        const auto normals = numbers<float>(points_.back(), 3, RQ_TYPE_NORMAL);
        const auto counts = numbers<int32_t>(faces_.back(), 1, RQ_TYPE_NONE);
        const auto list = numbers<int32_t>(corners_.back(), 1, RQ_TYPE_NONE);
        host::parallelFor(blocks_.size(), kBlocksPerTask, [&](int64_t block) {
            copyTriples(surfaces_[size_t(block)].positions(), positions->data() + 3 * points_[size_t(block)]);
            copyTriples(surfaces_[size_t(block)].normals(), normals->data() + 3 * points_[size_t(block)]);
            writeFaces(block, counts->data() + faces_[size_t(block)], list->data() + corners_[size_t(block)]);
        });
        const RQ_AttributeMapHandle map(new RQ_AttributeMap);
        map->add("P", true);
        map->add("N", true);
        const RQ_AttributeListHandle shared(new RQ_AttributeList(map, 1));
        shared->set(0, positions, 0);
        shared->set(1, normals, 0);
        return new RQ_PrimPolygonMesh(counts, list, shared);
    }

    /// Without the zero before the first.
    std::vector<int64_t> pointEnds() const { return {points_.begin() + 1, points_.end()}; }

private:
    template <class T> static BAS_IntrusivePtr<RQ_DANumeric<T>> numbers(int64_t size, int64_t tupleSize, RQ_Type type)
    {
        return new RQ_DANumeric<T>(size, tupleSize, type);
    }

    static void copyTriples(const std::vector<BAS_Vec3f> &from, float *to)
    {
        for (const BAS_Vec3f &triple : from)
            to = std::copy_n(&triple.x, 3, to);
    }

    /// The block that lies `corner` (a bit for each axis) beyond another; the surface does not leave the blocks.
    int64_t beyond(int64_t block, int corner) const
    {
        Index3 at = blocks_.at[size_t(block)];
        for (size_t axis = 0; axis < 3; ++axis)
            at[axis] += corner >> axis & 1;
        const auto found = numbers_.find(keyOf(at));
        return found == numbers_.end() ? block : found->second;
    }

    void writeFaces(int64_t block, int32_t *counts, int32_t *list) const
    {
        const BlockSurface &surface = surfaces_[size_t(block)];
        if (surface.faces() == 0)
            return;
        int64_t around[8];
        for (int corner = 0; corner < 8; ++corner)
            around[corner] = beyond(block, corner);
        const auto pointOn = [&](int edge, int x, int y, int z) {
            x += edge & 1, y += edge >> 1 & 1, z += edge >> 2 & 1;
            const int64_t owner = around[int(x == kBlockCells) | int(y == kBlockCells) << 1 | int(z == kBlockCells) << 2];
            constexpr int kWrap = kBlockCells - 1;
            return int32_t(points_[size_t(owner)] +
                           surfaces_[size_t(owner)].pointOf(edge >> 3, x & kWrap, y & kWrap, z & kWrap));
        };
        for (int z = 0; z < kBlockCells; ++z)
            for (int y = 0; y < kBlockCells; ++y)
                for (int x = 0; x < kBlockCells; ++x)
                {
                    const rq::CubeLoops &cut = surface.loops(x, y, z);
                    counts = std::copy_n(cut.counts, cut.loops, counts);
                    for (int i = 0; i < cut.corners; ++i)
                        *list++ = pointOn(cut.edges[i], x, y, z);
                }
    }

    const rq::SurfaceBlocks &blocks_;
    const std::vector<BlockSurface> &surfaces_;
    std::unordered_map<uint64_t, int64_t> numbers_;
    std::vector<int64_t> points_{0}, faces_{0}, corners_{0};  // running totals
};
}  // namespace

rq::IsoSurface rq::makeIsoSurface(const LevelField &field, const SurfaceGrid &grid, bool &isTooLarge)
{
    IsoSurface made;
    isTooLarge = !findSurfaceBlocks(field, grid, made.blocks);
    if (isTooLarge)
        return made;
    BAS_Progress progress("Making an iso-surface");
    std::vector<BlockSurface> surfaces(size_t(made.blocks.size()));
    host::parallelFor(made.blocks.size(), kBlocksPerTask, [&](int64_t block) {
        if (progress.interrupted(double(block) / double(made.blocks.size())))
            return;
        Index3 first = made.blocks.at[size_t(block)];
        for (int32_t &sample : first)
            sample *= kBlockCells;
        surfaces[size_t(block)].make(field, grid, first, made.blocks.partsOf(block));
    });
    if (progress.isInterrupted())
        return made;
    const Assembly assembly(made.blocks, surfaces);
    made.mesh = assembly.mesh();
    made.pointEnds = assembly.pointEnds();
    return made;
}

#pragma once

#include <array>
#include <bit>
#include <vector>

#include <host/bas/LargeBlocks.h>
#include <host/bas/Parallel.h>
#include <rq/data/Positions.h>
#include <rq/data/Values.h>
#include <rq/surface/PrimPolygonMesh.h>
#include <rq/surface/detail/TangentLanes.h>

namespace rq
{
/// An attribute of corners or, where they lack it, of their points, in 32-bit floats.
class CornerValues
{
public:
    CornerValues() = default;
    CornerValues(const RQ_DataArrayHandle &array, int64_t rows, bool ofPoints) : ofPoints_(ofPoints)
    {
        if (array && RQisNumeric(array->getStorage()) && array->entries() >= rows)
            values_ = Values<float>(array);
    }
    CornerValues(const RQ_PrimPolygonMesh &mesh, const char *name, int segment)
    {
        if (mesh.getVertex() && mesh.getVertex()->get(name, segment))
            *this = CornerValues(mesh.getVertex()->get(name, segment), mesh.getVertexCount(), false);
        else if (mesh.getShared())
            *this = CornerValues(mesh.getShared()->get(name, segment), mesh.getPointCount(), true);
    }

    bool has(int64_t components) const { return values_.data() && values_.tupleSize() >= components; }
    bool isOfPoints() const { return ofPoints_; }
    const float *operator()(int64_t corner, int64_t point) const
    {
        return values_.data() + (ofPoints_ ? point : corner) * values_.tupleSize();
    }

private:
    Values<float> values_;
    bool ofPoints_ = false;
};

/// What tangents follow from.  All of it is read in 32-bit floats, as everybody does who makes tangents by this method:
/// whoever bakes a texture and whoever draws it must come to the same ones.
class TangentInput
{
public:
    /// The bits of position, normal and texture coordinates; zeros have no sign.
    struct Key
    {
        std::array<uint64_t, 4> words;

        bool operator==(const Key &other) const
        {
            uint64_t differing = 0;
            for (size_t i = 0; i < words.size(); ++i)
                differing |= words[i] ^ other.words[i];
            return differing == 0;
        }
    };

    TangentInput(const Positions &positions, CornerValues texture, CornerValues normals)
        : texture_(std::move(texture)), normals_(std::move(normals)), positions_(positions), flat_(positions.flat())
    {
        if (flat_)
            return;
        constexpr int64_t kPointsPerTask = 16384;
        rounded_.resize(size_t(positions.entries()));
        host::parallelFor(positions.entries(), kPointsPerTask,
                          [&](int64_t point) { rounded_[size_t(point)] = BAS_Vec3f(positions[point]); });
        flat_ = rounded_.empty() ? nullptr : &rounded_[0].x;
    }

    BAS_Vec3f position(int64_t point) const { return {flat_[3 * point], flat_[3 * point + 1], flat_[3 * point + 2]}; }

    /// The unit normal of a corner.
    BAS_Vec3f normal(int64_t corner, int64_t point) const
    {
        const float *n = normals_(corner, point);
        return unitNormal({n[0], n[1], n[2]});
    }

    /// Where a corner's values lie; the normal as it is given.
    TangentCorner corner(int64_t corner, int64_t point) const
    {
        return {flat_ + 3 * point, normals_(corner, point), texture_(corner, point)};
    }

    /// Whether all corners of a point hold the same.
    bool isOfPoints() const { return texture_.isOfPoints() && normals_.isOfPoints(); }

    /// Whether two corners of a point have the same key.
    bool areAlike(int64_t cornerA, int64_t cornerB, int64_t point) const
    {
        const float *nA = normals_(cornerA, point), *nB = normals_(cornerB, point);
        const float *tA = texture_(cornerA, point), *tB = texture_(cornerB, point);
        const auto differ = [](float a, float b) {
            return std::bit_cast<uint32_t>(a + 0.0f) ^ std::bit_cast<uint32_t>(b + 0.0f);
        };
        return (differ(nA[0], nB[0]) | differ(nA[1], nB[1]) | differ(nA[2], nB[2]) | differ(tA[0], tB[0]) |
                differ(tA[1], tB[1])) == 0;
    }

    Key key(int64_t corner, int64_t point) const
    {
        const BAS_Vec3f p = position(point);
        const float *n = normals_(corner, point), *t = texture_(corner, point);
        const auto bits = [](float value) { return uint64_t(std::bit_cast<uint32_t>(value + 0.0f)); };
        return {{bits(p.x) << 32 | bits(p.y), bits(p.z) << 32 | bits(n[0]), bits(n[1]) << 32 | bits(n[2]),
                 bits(t[0]) << 32 | bits(t[1])}};
    }

private:
    CornerValues texture_, normals_;
    Positions positions_;
    std::vector<BAS_Vec3f, BAS_BlockAllocator<BAS_Vec3f>> rounded_;
    const float *flat_ = nullptr;
};
}  // namespace rq

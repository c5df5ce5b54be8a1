#pragma once

#include <algorithm>
#include <limits>

#include <host/bas/FaceBlock.h>
#include <host/bas/LargeBlocks.h>

namespace host
{
/// Neighbouring triangles or quads whose points stand one after the other, and the weights of their corners, null for 1.
template <class Index> struct PointSumFaces
{
    const Index *points;
    int64_t corners;  // of each
    int64_t count;
    const double *weights;
};

/// The sums of `count` points from `first` on, and the least weight at each; null when nobody asks.
struct PointSumPlaces
{
    int64_t first, count;
    BAS_Vec4d *sums;
    double *least;
};

/// Add the part of each face, times the weights of its corners, to the sums of its points; other points are passed over.
HOST_API void addParts(const PointSumFaces<int32_t> &faces, const BAS_Vec4d *parts, const PointSumPlaces &places);
HOST_API void addParts(const PointSumFaces<int64_t> &faces, const BAS_Vec4d *parts, const PointSumPlaces &places);

/// What faces give to the points of a window: for each the sum of their normals times weights, and that of the weights.
template <class Real> class PointSums
{
public:
    /// Nothing yet for points [first, last).  With `keepsLeast` the least weight at each is noted too.
    PointSums(int64_t first, int64_t last, bool keepsLeast)
        : first_(first), sums_(size_t(last - first)), least_(keepsLeast ? sums_.size() : 0)
    {
        std::fill(sums_.begin(), sums_.end(), BAS_Vec4d(0.0));
        std::fill(least_.begin(), least_.end(), std::numeric_limits<double>::infinity());
    }

    int64_t first() const { return first_; }
    int64_t count() const { return int64_t(sums_.size()); }

    /// The place of a point in the window; not below `count()` for points outside.
    uint64_t place(int64_t point) const { return uint64_t(point - first_); }

    /// The sums from the i-th point on.
    const BAS_Vec4d *sums(int64_t i) const { return sums_.data() + i; }

    /// The least weights from there on; null when they are not kept.
    const double *least(int64_t i) const { return least_.empty() ? nullptr : least_.data() + i; }

    /// Add what the faces of a block, [firstFace, lastFace), give to these points.
    template <class Topology>
    void add(const Topology topology, const FaceBlock<Real> &block, int64_t firstFace, int64_t lastFace)
    {
        using Index = typename Topology::Index;
        if (block.cornersOfEach() > 0)
            return addParts(PointSumFaces<Index>{topology.points + topology.begin(firstFace), block.cornersOfEach(),
                                                 lastFace - firstFace, block.cornerWeights()},
                            block.parts(), {first_, count(), sums_.data(), least_.empty() ? nullptr : least_.data()});
        for (int64_t face = firstFace; face < lastFace; ++face)
            for (int64_t corner = topology.begin(face), end = topology.end(face); corner < end; ++corner)
                if (const uint64_t at = place(topology.point(corner)); at < sums_.size())
                {
                    const double weight = block.weight(face - firstFace, corner);
                    sums_[at] += block.parts()[face - firstFace] * (block.cornerWeights() ? weight : 1.0);
                    if (!least_.empty())
                        least_[at] = std::min(least_[at], weight);
                }
    }

private:
    template <class T> using Row = std::vector<T, BAS_BlockAllocator<T>>;

    int64_t first_;
    Row<BAS_Vec4d> sums_;
    Row<double> least_;
};
}  // namespace host

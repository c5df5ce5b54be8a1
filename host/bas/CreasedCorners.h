#pragma once

#include <span>
#include <utility>
#include <vector>

#include <host/bas/BitArray.h>
#include <host/bas/CreaseBatches.h>
#include <host/bas/LargeBlocks.h>
#include <host/bas/flaggedFaces.h>

namespace host
{
/// The corners at those points of a window that are not smooth, and the normal of each.
///
/// Use  set `flags` of the points; `note` the corners in order; `separate`; they come as they were noted
template <class Real, class Index> class CreasedCorners
{
public:
    using Vector = Imath::Vec3<Real>;

    struct Corner
    {
        Index corner, face;  // the place of its face's normal
        uint32_t point;      // its place in the window
        Real weight;
        Vector normal;
    };

    /// For a window of so many points.
    explicit CreasedCorners(int64_t points) : flags(points + 64), ranks_(size_t(points)) {}

    void note(int64_t corner, int64_t point, int64_t face, double weight)
    {
        corners_.push_back({Index(corner), Index(face), uint32_t(point), Real(weight), Vector(Real(0))});
    }

    /// Work out the normals, from those of the faces.
    void separate(const CuspCosines &cusp, bool normalize, const Vector *faceNormals)
    {
        if (corners_.empty())
            return;
        sortByPoint();
        const auto write = [&](int64_t i, const BAS_Vec3d &sum) { corners_[size_t(i)].normal = Vector(sum); };
        CreaseBatches batches(cusp, normalize, write);
        for (size_t i = 0; i + 1 < starts_.size(); ++i)
            batches.add(std::span<const Index>(order_.data() + starts_[i], order_.data() + starts_[i + 1]), [&](Index at) {
                const Corner &corner = corners_[size_t(at)];
                return std::pair(BAS_Vec3d(faceNormals[corner.face]), double(corner.weight));
            });
        batches.finish();
    }

    std::span<const Corner> corners() const { return corners_; }

    BAS_BitArray flags;  ///< of the points, and 64 more

private:
    // Puts the corners of each point side by side, in the order in which they came.
    void sortByPoint()
    {
        Index points = 0;
        for (int64_t point = flags.next(0); point < flags.size(); point = flags.next(point + 1))
            ranks_[size_t(point)] = points++;
        // A point's corners are counted two places further, and so put in from one place further on.
        starts_.assign(size_t(points) + 2, 0);
        for (const Corner &corner : corners_)
            ++starts_[size_t(ranks_[corner.point]) + 2];
        for (size_t i = 2; i < starts_.size(); ++i)
            starts_[i] += starts_[i - 1];
        order_.resize(corners_.size());
        for (size_t i = 0; i < corners_.size(); ++i)
            order_[size_t(starts_[size_t(ranks_[corners_[i].point]) + 1]++)] = Index(i);
        starts_.pop_back();
    }

    template <class T> using Row = std::vector<T, BAS_BlockAllocator<T>>;

    Row<Corner> corners_;
    Row<Index> ranks_;           // of the flagged points among these
    Row<Index> starts_, order_;  // of each point's corners, among all
};
}  // namespace host

#pragma once

#include <array>
#include <span>
#include <vector>

#include <host/bas/BitArray.h>
#include <host/bas/CornerFan.h>
#include <host/bas/CreaseLanes.h>
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
        sortByPoint();
        std::array<Batch, CreaseLanes::kMostCorners + 1> batches;  // by the number of corners
        CornerFan fan;
        for (size_t i = 0; i + 1 < starts_.size(); ++i)
        {
            const Around around(order_.data() + starts_[i], order_.data() + starts_[i + 1]);
            if (around.size() > CreaseLanes::kMostCorners)
                separateOne(around, cusp, normalize, faceNormals, fan);
            else if (Batch &batch = batches[around.size()]; batch.add(around))
                separateBatch(batch, cusp, normalize, faceNormals);
        }
        for (Batch &batch : batches)
            if (batch.count > 0)
                separateBatch(batch, cusp, normalize, faceNormals);
    }

    std::span<const Corner> corners() const { return corners_; }

    BAS_BitArray flags;  ///< of the points, and 64 more

private:
    using Around = std::span<const Index>;

    // Some points with equally many corners.
    struct Batch
    {
        std::array<Around, CreaseLanes::kPoints> points;
        size_t count = 0;

        // True when it is full.
        bool add(Around around)
        {
            points[count++] = around;
            return count == points.size();
        }
    };

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

    void separateBatch(Batch &batch, const CuspCosines &cusp, bool normalize, const Vector *faceNormals)
    {
        CreaseLanes lanes;
        VectorLanes sums;
        const size_t corners = batch.points[0].size();
        const auto eachCorner = [&](size_t points, auto &&visit) {
            for (size_t point = 0; point < points; ++point)
                for (size_t i = 0; i < corners; ++i)
                    visit(point, i, corners_[size_t(batch.points[std::min(point, batch.count - 1)][i])]);
        };
        // The last point fills what is left.
        eachCorner(CreaseLanes::kPoints, [&](size_t point, size_t i, const Corner &corner) {
            for (int axis = 0; axis < 3; ++axis)
                lanes.normals[i][axis][point] = double(faceNormals[corner.face][axis]);
            lanes.weights[i][point] = corner.weight;
        });
        lanes.separate(int64_t(corners), cusp.pair, normalize, sums);
        eachCorner(batch.count, [&](size_t point, size_t i, Corner &corner) {
            corner.normal = Vector(sums[int64_t(i * CreaseLanes::kPoints + point)]);
        });
        batch.count = 0;
    }

    void separateOne(Around around, const CuspCosines &cusp, bool normalize, const Vector *faceNormals, CornerFan &fan)
    {
        const auto corner = [&](size_t i) -> Corner & { return corners_[size_t(around[i])]; };
        fan.resize(int64_t(around.size()));
        for (size_t i = 0; i < around.size(); ++i)
            fan.set(int64_t(i), BAS_Vec3d(faceNormals[corner(i).face]), corner(i).weight);
        fan.separate(cusp, normalize, [&](int64_t i, const BAS_Vec3d &sum) { corner(size_t(i)).normal = Vector(sum); });
    }

    template <class T> using Row = std::vector<T, BAS_BlockAllocator<T>>;

    Row<Corner> corners_;
    Row<Index> ranks_;           // of the flagged points among these
    Row<Index> starts_, order_;  // of each point's corners, among all
};
}  // namespace host

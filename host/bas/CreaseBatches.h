#pragma once

#include <array>
#include <span>

#include <host/bas/CornerFan.h>
#include <host/bas/CreaseLanes.h>

namespace host
{
/// The corners around points that are not smooth, separated some points of equally many corners at a time.
///
/// Use      `add` the corners of each point; `finish`
/// Threads  one object per thread
template <class Write> class CreaseBatches
{
public:
    /// `write(corner, sum)` is called once for each corner, after all at its point were read.
    CreaseBatches(const CuspCosines &cusp, bool normalize, const Write &write)
        : cusp_(cusp), normalize_(normalize), write_(write)
    {}

    /// `read(corner)` returns the unit normal of a corner's face, and the corner's weight.
    template <class Index, class Read> void add(std::span<const Index> corners, const Read &read)
    {
        if (corners.size() > CreaseLanes::kMostCorners)
            return separateMany(corners, read);
        Batch &batch = batches_[corners.size()];
        for (size_t i = 0; i < corners.size(); ++i)
        {
            const auto [normal, weight] = read(corners[i]);
            for (int axis = 0; axis < 3; ++axis)
                batch.lanes.normals[i][axis][batch.points] = normal[axis];
            batch.lanes.weights[i][batch.points] = weight;
            batch.corners[i][batch.points] = corners[i];
        }
        if (++batch.points == CreaseLanes::kPoints)
            separate(corners.size());
    }

    void finish()
    {
        for (size_t corners = 0; corners < batches_.size(); ++corners)
            if (batches_[corners].points > 0)
                separate(corners);
    }

private:
    // Some points with equally many corners.
    struct Batch
    {
        CreaseLanes lanes;
        int64_t corners[CreaseLanes::kMostCorners][CreaseLanes::kPoints];
        size_t points = 0;
    };

    void separate(size_t corners)
    {
        Batch &batch = batches_[corners];
        VectorLanes sums;
        batch.lanes.separate(int64_t(corners), cusp_.pair, normalize_, sums);
        for (size_t point = 0; point < batch.points; ++point)
            for (size_t i = 0; i < corners; ++i)
                write_(batch.corners[i][point], sums[int64_t(i * CreaseLanes::kPoints + point)]);
        batch.points = 0;
    }

    template <class Index, class Read> void separateMany(std::span<const Index> corners, const Read &read)
    {
        fan_.resize(int64_t(corners.size()));
        for (size_t i = 0; i < corners.size(); ++i)
        {
            const auto [normal, weight] = read(corners[i]);
            fan_.set(int64_t(i), normal, weight);
        }
        fan_.separate(cusp_, normalize_, [&](int64_t i, const BAS_Vec3d &sum) { write_(int64_t(corners[size_t(i)]), sum); });
    }

    const CuspCosines cusp_;
    const bool normalize_;
    const Write &write_;
    std::array<Batch, CreaseLanes::kMostCorners + 1> batches_;  // by the number of corners
    CornerFan fan_;
};
}  // namespace host

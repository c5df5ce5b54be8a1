#pragma once

#include <array>
#include <cstring>
#include <limits>
#include <span>
#include <utility>

#include <host/bas/CornerAdjacency.h>
#include <host/bas/CreaseBatches.h>
#include <host/bas/FaceBlock.h>

namespace host
{
/// Normals of points and corners through the corners around each point, whatever the order of faces and points.
///
/// Face normals and weights are kept for all faces, the weights where `weightOf(corner)` says.
template <class Real, class Topology, class Adjacency, class WeightOf> class ScatteredNormals
{
public:
    using Vector = Imath::Vec3<Real>;

    /// All must live as long; without `isWeighted` all weights are 1.
    ScatteredNormals(const Topology &topology, const Adjacency &adjacency, const WeightOf &weightOf, bool isWeighted)
        : topology_(topology), adjacency_(adjacency), weightOf_(weightOf), isWeighted_(isWeighted),
          normals_(size_t(topology.faces()))
    {}

    /// Keep the faces of a block, [first, last); safe from several threads for different ones.
    void keep(const FaceBlock<Real> &block, int64_t first, int64_t last)
    {
        const Topology topology = topology_;
        storeLanes(block.normals(), last - first, &normals_[size_t(first)].x);
        if (isWeighted_)
            for (int64_t face = first; face < last; ++face)
                for (int64_t corner = topology.begin(face), end = topology.end(face); corner < end; ++corner)
                    *weightOf_(corner) = Real(block.weight(face - first, corner));
    }

    /// Write the normals of all points, one after the other.
    void writePoints(bool normalize, Real *to) const
    {
        eachTask([&](const auto &, const auto &, const auto &eachBatch) {
            eachBatch([&](int64_t first, int64_t count, Sums &sums) {
                double lengths[kLanes];
                if (normalize)
                    normalizeLanes(sums.vectors, count, lengths);
                storeLanes(sums.vectors, count, to + 3 * first);
            });
        });
    }

    /// Write those of all corners.  A corner's weight is wanted last when its normal is written: they may share the place.
    template <class PlaceOf> void writeCorners(const CuspCosines &cusp, bool normalize, const PlaceOf &placeOf) const
    {
        const auto write = [&](int64_t corner, const BAS_Vec3d &sum) {
            const Vector normal(sum);
            std::memcpy(placeOf(corner), &normal, sizeof(Vector));
        };
        eachTask([&](const auto &faceOf, const auto &weight, const auto &eachBatch) {
            const auto read = [&](int64_t corner) {
                return std::pair(BAS_Vec3d(normals_[size_t(faceOf(corner))]), weight(corner));
            };
            CreaseBatches creased(cusp, normalize, write);
            eachBatch([&](int64_t first, int64_t count, Sums &sums) {
                writeSmooth(first, count, cusp, normalize, sums, placeOf,
                            [&](const auto &corners) { creased.add(corners, read); });
            });
            creased.finish();
        });
    }

private:
    // A point of valence 4 costs some 10 ns.
    static constexpr int64_t kPointsPerTask = 1024;
    static constexpr int64_t kLanes = VectorLanes::kCount;

    // What the faces around some neighbouring points give to each, and all their weights and the least one.
    struct Sums
    {
        VectorLanes vectors;
        double weights[kLanes];
        double least[kLanes];
    };

    // Calls `run(faceOf, weight, eachBatch)` for every task, which calls `eachBatch(finish)`: it sums up some neighbouring
    // points at a time, and calls `finish(point, count, sums)`.
    template <class Run> void eachTask(const Run &run) const
    {
        const auto runAll = [&](const auto &faceOf, const auto &weight) {
            parallelForRange(adjacency_.points(), kPointsPerTask, [&](int64_t begin, int64_t end) {
                run(faceOf, weight, [&](const auto &finish) {
                    Sums sums;
                    for (int64_t first = begin; first < end; first += kLanes)
                    {
                        const int64_t count = std::min(kLanes, end - first);
                        for (int64_t i = 0; i < count; ++i)
                            sumAround(faceOf, weight, first + i, i, sums);
                        finish(first, count, sums);
                    }
                });
            });
        };
        adjacency_.visitFaces(topology_, [&](const auto &faceOf) {
            if (isWeighted_)
                runAll(faceOf, [&](int64_t corner) { return double(*weightOf_(corner)); });
            else
                runAll(faceOf, [](int64_t) { return 1.0; });
        });
    }

    template <class FaceOf, class Weight>
    void sumAround(const FaceOf &faceOf, const Weight &weightOf, int64_t point, int64_t lane, Sums &sums) const
    {
        const auto *corners = adjacency_.around(point);
        const Vector *const normals = normals_.data();
        BAS_Vec3d sum(0.0);
        double weights = 0.0, least = std::numeric_limits<double>::infinity();
        for (const auto *corner = corners, *const end = corners + adjacency_.valence(point); corner != end; ++corner)
        {
            const double weight = weightOf(*corner);
            sum += BAS_Vec3d(normals[faceOf(*corner)]) * weight;
            weights += weight;
            least = std::min(least, weight);
        }
        sums.vectors.set(lane, sum);
        sums.weights[lane] = weights;
        sums.least[lane] = least;
    }

    // Writes to the corners around smooth points, and calls `separate(corners)` for each of the others.
    template <class PlaceOf, class Separate>
    void writeSmooth(int64_t first, int64_t count, const CuspCosines &cusp, bool normalize, Sums &sums,
                     const PlaceOf &placeOf, const Separate &separate) const
    {
        std::array<Vector, size_t(kLanes)> normals;
        const auto note = [&] {
            for (int64_t i = 0; i < count; ++i)
                normals[size_t(i)] = Vector(sums.vectors[i]);
        };
        double lengths[kLanes];
        if (!normalize)
            note();
        normalizeLanes(sums.vectors, count, lengths);
        if (normalize)
            note();
        for (int64_t i = 0; i < count; ++i)
        {
            const std::span corners(adjacency_.around(first + i), size_t(adjacency_.valence(first + i)));
            if (cusp.isSmooth(lengths[i], sums.weights[i], sums.least[i]))
                for (const auto corner : corners)
                    std::memcpy(placeOf(corner), &normals[size_t(i)], sizeof(Vector));
            else
                separate(corners);
        }
    }

    const Topology &topology_;
    const Adjacency &adjacency_;
    const WeightOf &weightOf_;
    bool isWeighted_;
    std::vector<Vector, BAS_BlockAllocator<Vector>> normals_;  // unit length, of each face
};
}  // namespace host

#pragma once

#include <array>
#include <cstring>
#include <limits>

#include <host/bas/CornerAdjacency.h>
#include <host/bas/CornerFan.h>
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
        eachBatch([&](const auto &, int64_t first, int64_t count, Sums &sums) {
            double lengths[kLanes];
            if (normalize)
                normalizeLanes(sums.vectors, count, lengths);
            storeLanes(sums.vectors, count, to + 3 * first);
        });
    }

    /// Write those of all corners.  A corner's weight is wanted last when its normal is written: they may share the place.
    template <class PlaceOf> void writeCorners(const CuspCosines &cusp, bool normalize, const PlaceOf &placeOf) const
    {
        eachBatch([&](const auto &faceOf, int64_t first, int64_t count, Sums &sums) {
            writeBatch(faceOf, first, count, cusp, normalize, sums, placeOf);
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
        CornerFan fan;  // of one of them after the other
    };

    // Calls `finish(faceOf, point, count, sums)` for all points, some neighbours at a time.
    template <class Finish> void eachBatch(Finish &&finish) const
    {
        const auto run = [&](const auto &faceOf, const auto &weight) {
            parallelForRange(adjacency_.points(), kPointsPerTask, [&](int64_t begin, int64_t end) {
                Sums sums;
                for (int64_t first = begin; first < end; first += kLanes)
                {
                    const int64_t count = std::min(kLanes, end - first);
                    for (int64_t i = 0; i < count; ++i)
                        sumAround(faceOf, weight, first + i, i, sums);
                    finish(faceOf, first, count, sums);
                }
            });
        };
        adjacency_.visitFaces(topology_, [&](const auto &faceOf) {
            if (isWeighted_)
                run(faceOf, [&](int64_t corner) { return double(*weightOf_(corner)); });
            else
                run(faceOf, [](int64_t) { return 1.0; });
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

    template <class FaceOf, class PlaceOf>
    void writeBatch(const FaceOf &faceOf, int64_t first, int64_t count, const CuspCosines &cusp, bool normalize, Sums &sums,
                    const PlaceOf &placeOf) const
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
            const auto *corners = adjacency_.around(first + i);
            const int64_t valence = adjacency_.valence(first + i);
            if (cusp.isSmooth(lengths[i], sums.weights[i], sums.least[i]))
                for (int64_t k = 0; k < valence; ++k)
                    std::memcpy(placeOf(corners[k]), &normals[size_t(i)], sizeof(Vector));
            else
                separateNormals(corners, valence, faceOf, cusp, normalize, sums.fan, placeOf);
        }
    }

    // Writes to each of the corners around a point the sum over the faces within the cusp angle of its own.
    template <class Index, class FaceOf, class PlaceOf>
    void separateNormals(const Index *corners, int64_t valence, const FaceOf &faceOf, const CuspCosines &cusp,
                         bool normalize, CornerFan &fan, const PlaceOf &placeOf) const
    {
        fan.resize(valence);
        for (int64_t i = 0; i < valence; ++i)
            fan.set(i, BAS_Vec3d(normals_[size_t(faceOf(corners[i]))]), isWeighted_ ? double(*weightOf_(corners[i])) : 1.0);
        fan.separate(cusp, normalize, [&](int64_t i, const BAS_Vec3d &sum) {
            const Vector normal(sum);
            std::memcpy(placeOf(corners[i]), &normal, sizeof(Vector));
        });
    }

    const Topology &topology_;
    const Adjacency &adjacency_;
    const WeightOf &weightOf_;
    bool isWeighted_;
    std::vector<Vector, BAS_BlockAllocator<Vector>> normals_;  // unit length, of each face
};
}  // namespace host

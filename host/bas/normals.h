#pragma once

#include <array>
#include <cstring>
#include <limits>

#include <host/bas/CornerAdjacency.h>
#include <host/bas/CornerFan.h>
#include <host/bas/FaceBlock.h>
#include <host/bas/PointWindows.h>

// Normals of points and of face corners, in one kernel, so that two users can never disagree.
//
// A topology offers `faces()`, `begin(face)`, `end(face)` (corner positions) and `point(corner)`; positions are read as
// `position(point)` in 64-bit floats.  Both are copied into the loops: they must be small.

namespace host
{
/// Normals of one mesh: the sums of what its faces give to the points around them.
///
/// Sums run in 64 bits in face order, so the bits never depend on the way in which they are made: those of points alone,
/// where neighbouring faces use neighbouring points, a window of points at a time; all others through the corners around a
/// point, for which `adjacencyOf()` is called once, if at all, and returns what converts to a
/// `const CornerAdjacency<Index> &` with `*`.  A point of faces without area only has the zero vector.
template <class Real, class Topology, class Position, class AdjacencyOf> class NormalKernel
{
public:
    using Vector = Imath::Vec3<Real>;

    /// `given`, if not null, holds one weight per corner that is taken instead.
    NormalKernel(int64_t points, const Topology &topology, const Position &position, const AdjacencyOf &adjacencyOf,
                 NormalWeights weights, const float *given = nullptr)
        : topology_(topology), position_(position), adjacencyOf_(adjacencyOf), weights_(weights), given_(given),
          points_(points)
    {}

    /// Call `write(point, normal)` for every point.
    template <class Write> void pointNormals(bool normalize, Write &&write)
    {
        const PointWindows windows(points_, topology_, Block::kFaces);
        if (windows.hasLocality())
            return sumWindows(windows, normalize, write);
        const auto adjacency = adjacencyOf_();
        Row<Real> weights(size_t(isWeighted() ? topology_.begin(topology_.faces()) : 0));
        const auto weightOf = [&](int64_t corner) { return weights.data() + corner; };
        keepFaces(weightOf);
        eachBatch(*adjacency, weightOf, [&](const auto &, int64_t first, int64_t count, Sums &sums) {
            double lengths[kLanes];
            if (normalize)
                normalizeLanes(sums.vectors, count, lengths);
            for (int64_t i = 0; i < count; ++i)
                write(first + i, Vector(sums.vectors[i]));
        });
    }

    /// Write to `placeOf(corner)`, room for three numbers of its own, the normal of every corner: the sum over the faces
    /// around its point whose normal lies within `cuspAngle` degrees of the corner's own face.
    template <class PlaceOf> void cornerNormals(double cuspAngle, bool normalize, const PlaceOf &placeOf)
    {
        const CuspCosines cusp(cuspAngle);
        // What is needed to build it is gone before the faces take room.
        const auto adjacency = adjacencyOf_();
        // A corner's weight is wanted last when its normal is written: they share the place.
        keepFaces(placeOf);
        eachBatch(*adjacency, placeOf, [&](const auto &faceOf, int64_t first, int64_t count, Sums &sums) {
            writeCorners(*adjacency, faceOf, first, count, cusp, normalize, sums, placeOf);
        });
    }

private:
    // A point of valence 4 costs some 10 ns, a face some 6 ns: tasks are 10 us of work and more.
    static constexpr int64_t kPointsPerTask = 1024;
    static constexpr int64_t kBlocksPerTask = 64;

    static constexpr int64_t kLanes = VectorLanes::kCount;

    using Block = FaceBlock<Real>;
    template <class T> using Row = std::vector<T, BAS_BlockAllocator<T>>;

    // What the faces around some neighbouring points give to each, and all their weights and the least one.
    struct Sums
    {
        VectorLanes vectors;
        double weights[kLanes];
        double least[kLanes];
        CornerFan fan;  // of one of them after the other
    };

    bool isWeighted() const { return given_ || weights_ != NormalWeights::equal; }

    // Adds up what the faces give to the points of each window; `write(point, normal)` gets the sums.
    template <class Write> void sumWindows(const PointWindows &windows, bool normalize, Write &&write)
    {
        parallelFor(windows.count(), 1, [&](int64_t window) {
            const int64_t first = windows.first(window), last = windows.last(window);
            Row<BAS_Vec3d> sums(static_cast<size_t>(last - first));
            std::fill(sums.begin(), sums.end(), BAS_Vec3d(0.0));
            Block block;
            for (const int64_t index : windows.blocks(window))
            {
                const int64_t firstFace = index * Block::kFaces;
                const int64_t lastFace = std::min(firstFace + Block::kFaces, topology_.faces());
                block.evaluate(topology_, position_, firstFace, lastFace, weights_, given_);
                addToPoints(block, firstFace, lastFace, first, sums);
            }
            writeSums(sums, first, normalize, write);
        });
    }

    void addToPoints(const Block &block, int64_t firstFace, int64_t lastFace, int64_t firstPoint, Row<BAS_Vec3d> &sums) const
    {
        const Topology topology = topology_;
        const uint64_t count = sums.size();
        BAS_Vec3d *to = sums.data();
        const auto add = [&](int64_t corner, const BAS_Vec3d &part) {
            if (const uint64_t at = uint64_t(topology.point(corner) - firstPoint); at < count)
                to[at] += part;
        };
        for (int64_t face = firstFace; face < lastFace; ++face)
        {
            const BAS_Vec3d normal(block.normal(face - firstFace));
            const int64_t begin = topology.begin(face), end = topology.end(face);
            if (block.weighsCorners())
                for (int64_t corner = begin; corner < end; ++corner)
                    add(corner, normal * double(block.cornerWeight(corner)));
            else
            {
                const BAS_Vec3d part = normal * double(block.weight(face - firstFace));
                for (int64_t corner = begin; corner < end; ++corner)
                    add(corner, part);
            }
        }
    }

    template <class Write>
    static void writeSums(const Row<BAS_Vec3d> &sums, int64_t firstPoint, bool normalize, Write &&write)
    {
        VectorLanes lanes;
        double lengths[kLanes];
        for (int64_t begin = 0; begin < int64_t(sums.size()); begin += kLanes)
        {
            const int64_t count = std::min(kLanes, int64_t(sums.size()) - begin);
            for (int64_t i = 0; i < count; ++i)
                lanes.set(i, sums[size_t(begin + i)]);
            if (normalize)
                normalizeLanes(lanes, count, lengths);
            for (int64_t i = 0; i < count; ++i)
                write(firstPoint + begin + i, Vector(lanes[i]));
        }
    }

    // Works out all faces and keeps their normals, and weights, if any, at `weightOf(corner)`.
    template <class WeightOf> void keepFaces(const WeightOf &weightOf)
    {
        normals_.resize(size_t(topology_.faces()));
        const auto keep = [&](const Block &block, int64_t first, int64_t last) {
            const Topology topology = topology_;
            for (int64_t face = first; face < last; ++face)
            {
                normals_[size_t(face)] = block.normal(face - first);
                if (isWeighted())
                    for (int64_t corner = topology.begin(face), end = topology.end(face); corner < end; ++corner)
                        *weightOf(corner) = block.weighsCorners() ? block.cornerWeight(corner) : block.weight(face - first);
            }
        };
        const int64_t blocks = (topology_.faces() + Block::kFaces - 1) / Block::kFaces;
        parallelForRange(blocks, kBlocksPerTask, [&](int64_t begin, int64_t end) {
            Block block;
            for (int64_t i = begin; i < end; ++i)
            {
                const int64_t first = i * Block::kFaces, last = std::min(first + Block::kFaces, topology_.faces());
                block.evaluate(topology_, position_, first, last, weights_, given_);
                keep(block, first, last);
            }
        });
    }

    // Calls `finish(faceOf, point, count, sums)` for all points, some neighbours at a time.
    template <class Adjacency, class WeightOf, class Finish>
    void eachBatch(const Adjacency &adjacency, const WeightOf &weightOf, Finish &&finish)
    {
        const auto run = [&](const auto &faceOf, const auto &weight) {
            parallelForRange(points_, kPointsPerTask, [&](int64_t begin, int64_t end) {
                Sums sums;
                for (int64_t first = begin; first < end; first += kLanes)
                {
                    const int64_t count = std::min(kLanes, end - first);
                    for (int64_t i = 0; i < count; ++i)
                        sumAround(adjacency, faceOf, weight, first + i, i, sums);
                    finish(faceOf, first, count, sums);
                }
            });
        };
        adjacency.visitFaces(topology_, [&](const auto &faceOf) {
            if (isWeighted())
                run(faceOf, [&](int64_t corner) { return double(*weightOf(corner)); });
            else
                run(faceOf, [](int64_t) { return 1.0; });
        });
    }

    template <class Adjacency, class FaceOf, class Weight>
    void sumAround(const Adjacency &adjacency, const FaceOf &faceOf, const Weight &weightOf, int64_t point, int64_t lane,
                   Sums &sums) const
    {
        const auto *corners = adjacency.around(point);
        const Vector *const normals = normals_.data();
        BAS_Vec3d sum(0.0);
        double weights = 0.0, least = std::numeric_limits<double>::infinity();
        for (const auto *corner = corners, *const end = corners + adjacency.valence(point); corner != end; ++corner)
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

    template <class Adjacency, class FaceOf, class PlaceOf>
    void writeCorners(const Adjacency &adjacency, const FaceOf &faceOf, int64_t first, int64_t count,
                      const CuspCosines &cusp, bool normalize, Sums &sums, const PlaceOf &placeOf) const
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
            const auto *corners = adjacency.around(first + i);
            const int64_t valence = adjacency.valence(first + i);
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
            fan.set(i, BAS_Vec3d(normals_[size_t(faceOf(corners[i]))]), isWeighted() ? double(*placeOf(corners[i])) : 1.0);
        fan.separate(cusp, normalize, [&](int64_t i, const BAS_Vec3d &sum) {
            const Vector normal(sum);
            std::memcpy(placeOf(corners[i]), &normal, sizeof(Vector));
        });
    }

    Topology topology_;
    Position position_;
    const AdjacencyOf &adjacencyOf_;
    NormalWeights weights_;
    const float *given_;
    int64_t points_;
    Row<Vector> normals_;  // unit length, of each face, when they are kept
};
}  // namespace host

#pragma once

#include <array>
#include <cstring>
#include <limits>
#include <numbers>

#include <host/bas/CornerAdjacency.h>
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
        Row<Real> weights(size_t(isWeighted() ? topology_.begin(topology_.faces()) : 0));
        const auto weightOf = [&](int64_t corner) { return weights.data() + corner; };
        keepFaces(weightOf);
        eachBatch(weightOf, [&](const auto &, int64_t first, int64_t count, Sums &sums, Fan &) {
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
        // The cosines of 60 and 90 degrees are not exact, and 32-bit positions add 1e-7: the test includes its border.
        const double radians = cuspAngle * std::numbers::pi / 180.0;
        const Cusp cusp{std::cos(radians) - 1e-6, std::cos(0.5 * radians) + 1e-6};
        // A corner's weight is wanted last when its normal is written: they share the place.
        keepFaces(placeOf);
        eachBatch(placeOf, [&](const auto &adjacency, int64_t first, int64_t count, Sums &sums, Fan &fan) {
            writeCorners(adjacency, first, count, cusp, normalize, sums, fan, placeOf);
        });
    }

private:
    // A point of valence 4 costs some 10 ns, a face some 6 ns: tasks are 10 us of work and more.
    static constexpr int64_t kPointsPerTask = 1024;
    static constexpr int64_t kBlocksPerTask = 64;

    // Around fewer faces all pairs are looked at sooner.
    static constexpr size_t kFew = 8;

    static constexpr int64_t kLanes = VectorLanes::kCount;

    using Block = FaceBlock<Real>;
    template <class T> using Row = std::vector<T, BAS_BlockAllocator<T>>;

    // The least cosine of the angle between two normals that count as one surface, and between one and the mean of all.
    struct Cusp
    {
        double pair;
        double mean;
    };

    // What the faces around some neighbouring points give to each, and all their weights and the least one.
    struct Sums
    {
        VectorLanes vectors;
        double weights[kLanes];
        double least[kLanes];
    };

    // The faces around one point.
    struct Fan
    {
        std::vector<BAS_Vec3d> normals;
        std::vector<BAS_Vec3d> contributions;
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

    // Calls `finish(adjacency, point, count, sums, fan)` for all points, some neighbours at a time.
    template <class WeightOf, class Finish> void eachBatch(const WeightOf &weightOf, Finish &&finish)
    {
        const auto adjacency = adjacencyOf_();
        parallelForRange(points_, kPointsPerTask, [&](int64_t begin, int64_t end) {
            Sums sums;
            Fan fan;
            for (int64_t first = begin; first < end; first += kLanes)
            {
                const int64_t count = std::min(kLanes, end - first);
                for (int64_t i = 0; i < count; ++i)
                    sumAround(*adjacency, first + i, weightOf, i, sums);
                finish(*adjacency, first, count, sums, fan);
            }
        });
    }

    template <class Adjacency, class WeightOf>
    void sumAround(const Adjacency &adjacency, int64_t point, const WeightOf &weightOf, int64_t lane, Sums &sums) const
    {
        const auto *corners = adjacency.around(point);
        const int64_t valence = adjacency.valence(point);
        BAS_Vec3d sum(0.0);
        double weights = double(valence), least = 1.0;
        if (isWeighted())
        {
            weights = 0.0;
            least = std::numeric_limits<double>::infinity();
            for (int64_t i = 0; i < valence; ++i)
            {
                const double weight = double(*weightOf(corners[i]));
                sum += normalAt(adjacency, corners[i]) * weight;
                weights += weight;
                least = std::min(least, weight);
            }
        }
        else
            for (int64_t i = 0; i < valence; ++i)
                sum += normalAt(adjacency, corners[i]);
        sums.vectors.set(lane, sum);
        sums.weights[lane] = weights;
        sums.least[lane] = least;
    }

    template <class Adjacency> BAS_Vec3d normalAt(const Adjacency &adjacency, int64_t corner) const
    {
        return BAS_Vec3d(normals_[size_t(adjacency.faceOf(topology_, corner))]);
    }

    template <class Adjacency, class PlaceOf>
    void writeCorners(const Adjacency &adjacency, int64_t first, int64_t count, const Cusp &cusp, bool normalize, Sums &sums,
                      Fan &fan, const PlaceOf &placeOf) const
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
            // What the sum of unit vectors with weights lacks of the weights' sum is the sum of what each lacks of pointing
            // its way.  When all together lack little, so does every one; a millionth is for rounding.
            const double lacking = (1.0 + 1e-6) * sums.weights[i] - lengths[i];
            if (!(lacking < (1.0 - cusp.mean) * sums.least[i]))
            {
                separateNormals(adjacency, first + i, cusp, normalize, fan, placeOf);
                continue;
            }
            const auto *corners = adjacency.around(first + i);
            for (int64_t k = 0, valence = adjacency.valence(first + i); k < valence; ++k)
                std::memcpy(placeOf(corners[k]), &normals[size_t(i)], sizeof(Vector));
        }
    }

    // Writes to each corner of a point the sum over the faces within the cusp angle of its own.
    template <class Adjacency, class PlaceOf>
    void separateNormals(const Adjacency &adjacency, int64_t point, const Cusp &cusp, bool normalize, Fan &fan,
                         const PlaceOf &placeOf) const
    {
        const auto *corners = adjacency.around(point);
        const size_t valence = size_t(adjacency.valence(point));
        fan.normals.resize(valence);
        fan.contributions.resize(valence);
        for (size_t i = 0; i < valence; ++i)
        {
            fan.normals[i] = normalAt(adjacency, corners[i]);
            fan.contributions[i] = isWeighted() ? fan.normals[i] * double(*placeOf(corners[i])) : fan.normals[i];
        }
        // All corners of a smooth point share one sum, which spares a point of many faces the look at every pair.
        const bool isSmooth = valence > kFew && isNearMean(fan.normals, cusp.mean);
        BAS_Vec3d sum(0.0);
        Vector normal(Real(0));
        for (size_t own = 0; own < valence; ++own)
        {
            BAS_Vec3d ownSum = sum;
            if (own == 0 || !isSmooth)
            {
                ownSum = BAS_Vec3d(0.0);
                for (size_t i = 0; i < valence; ++i)
                    if (i == own || isSmooth || fan.normals[own].dot(fan.normals[i]) >= cusp.pair)
                        ownSum += fan.contributions[i];
            }
            // Neighbours on one side of a crease have the same sum.
            if (ownSum != sum)
                normal = Vector(normalize ? direction(ownSum) : ownSum);
            sum = ownSum;
            std::memcpy(placeOf(corners[own]), &normal, sizeof(Vector));
        }
    }

    static bool isNearMean(const std::vector<BAS_Vec3d> &normals, double least)
    {
        BAS_Vec3d mean(0.0);
        for (const BAS_Vec3d &normal : normals)
            mean += normal;
        mean = direction(mean);
        return std::all_of(normals.begin(), normals.end(),
                           [&](const BAS_Vec3d &normal) { return mean.dot(normal) >= least; });
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

#pragma once

#include <atomic>
#include <numbers>
#include <optional>

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
/// Sums run in 64 bits in face order, so the bits never depend on the way in which they are made: where neighbouring faces
/// use neighbouring points, a window of points at a time; otherwise, and at hard edges, through the corners around a point,
/// for which `adjacencyOf()` is called once, if at all, and returns what converts to a `const CornerAdjacency<Index> &` with
/// `*`.  A point of faces without area only has the zero vector.
template <class Real, class Topology, class Position, class AdjacencyOf> class NormalKernel
{
public:
    using Vector = Imath::Vec3<Real>;

    /// `given`, if not null, holds one weight per corner that is taken instead.
    NormalKernel(int64_t points, const Topology &topology, const Position &position, const AdjacencyOf &adjacencyOf,
                 NormalWeights weights, const float *given = nullptr)
        : topology_(topology), position_(position), adjacencyOf_(adjacencyOf), weights_(weights), given_(given),
          windows_(points, topology, Block::kFaces), points_(points)
    {}

    /// Call `write(point, normal)` for every point.
    template <class Write> void pointNormals(bool normalize, Write &&write)
    {
        if (windows_.hasLocality())
            return sumWindows(false, normalize, write);
        keepFaces();
        const auto adjacency = adjacencyOf_();
        parallelFor(points_, kPointsPerTask, [&](int64_t point) {
            BAS_Vec3d sum(0.0);
            const auto *corners = (*adjacency).around(point);
            for (int64_t i = 0, valence = (*adjacency).valence(point); i < valence; ++i)
                sum += contribution((*adjacency).faceOf(topology_, corners[i]), corners[i]);
            write(point, Vector(normalize ? direction(sum) : sum));
        });
    }

    /// Call `write(corner, normal)` for every corner: the sum over the faces around its point whose normal lies within
    /// `cuspAngle` degrees of the corner's own face.  What is written last counts.
    template <class Write> void cornerNormals(double cuspAngle, bool normalize, Write &&write)
    {
        // The cosines of 60 and 90 degrees are not exact, and 32-bit positions add 1e-7: the test includes its border.
        const double radians = cuspAngle * std::numbers::pi / 180.0;
        const Cusp cusp{std::cos(radians) - 1e-6, std::cos(0.5 * radians) + 1e-6};
        Row<uint8_t> isHard(size_t(points_), uint8_t(!windows_.hasLocality()));
        if (windows_.hasLocality())
        {
            keepRooms();
            Row<Vector> smooth(static_cast<size_t>(points_));
            sumWindows(true, normalize, [&](int64_t point, const Vector &normal) { smooth[size_t(point)] = normal; });
            if (!spreadNormals(smooth, normalize, cusp.mean, isHard, write))
                return;
        }
        else
            keepFaces();
        const auto adjacency = adjacencyOf_();
        parallelForRange(points_, kPointsPerTask, [&](int64_t first, int64_t last) {
            Fan fan;
            for (int64_t point = first; point < last; ++point)
                if (isHard[size_t(point)])
                    separateNormals(*adjacency, point, cusp, normalize, fan, write);
        });
    }

private:
    // A point of valence 4 costs some 50 ns, a face some 15 ns: tasks are 50 us of work.
    static constexpr int64_t kPointsPerTask = 1024;
    static constexpr int64_t kBlocksPerTask = 64;

    // Around fewer faces all pairs are looked at sooner.
    static constexpr size_t kFew = 8;

    using Block = FaceBlock<Real>;
    template <class T> using Row = std::vector<T, BAS_BlockAllocator<T>>;

    // The least cosine of the angle between two normals that count as one surface, and between one and the mean of all.
    struct Cusp
    {
        double pair;
        double mean;
    };

    // The faces around one point.
    struct Fan
    {
        std::vector<BAS_Vec3d> normals;
        std::vector<BAS_Vec3d> contributions;
    };

    // Adds up what the faces give to the points of each window; `write(point, normal)` gets the sums.
    template <class Write> void sumWindows(bool keeps, bool normalize, Write &&write)
    {
        parallelFor(windows_.count(), 1, [&](int64_t window) {
            const int64_t first = windows_.first(window), last = windows_.last(window);
            Row<BAS_Vec3d> sums(static_cast<size_t>(last - first));
            std::fill(sums.begin(), sums.end(), BAS_Vec3d(0.0));
            Block block;
            for (const PointWindows::Block &entry : windows_.blocks(window))
            {
                const int64_t firstFace = entry.index * Block::kFaces;
                const int64_t lastFace = std::min(firstFace + Block::kFaces, topology_.faces());
                block.evaluate(topology_, position_, firstFace, lastFace, weights_, given_);
                if (keeps && entry.isHome)
                    keep(block, firstFace, lastFace);
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
        for (int64_t face = firstFace; face < lastFace; ++face)
        {
            const BAS_Vec3d normal(block.normal(face - firstFace));
            const BAS_Vec3d part = normal * double(block.weight(face - firstFace));
            for (int64_t corner = topology.begin(face), end = topology.end(face); corner < end; ++corner)
                if (const uint64_t at = uint64_t(topology.point(corner) - firstPoint); at < count)
                    to[at] += block.weighsCorners() ? normal * double(block.cornerWeight(corner)) : part;
        }
    }

    template <class Write>
    static void writeSums(const Row<BAS_Vec3d> &sums, int64_t firstPoint, bool normalize, Write &&write)
    {
        VectorLanes lanes;
        double lengths[VectorLanes::kCount];
        for (size_t begin = 0; begin < sums.size(); begin += VectorLanes::kCount)
        {
            const size_t count = std::min<size_t>(VectorLanes::kCount, sums.size() - begin);
            for (size_t i = 0; i < count; ++i)
            {
                lanes.x[i] = sums[begin + i].x;
                lanes.y[i] = sums[begin + i].y;
                lanes.z[i] = sums[begin + i].z;
            }
            if (normalize)
                normalizeLanes(lanes, int64_t(count), lengths);
            for (size_t i = 0; i < count; ++i)
                write(firstPoint + int64_t(begin + i), Vector(Real(lanes.x[i]), Real(lanes.y[i]), Real(lanes.z[i])));
        }
    }

    // Works out all faces and keeps them.
    void keepFaces()
    {
        keepRooms();
        parallelForRange(
            (topology_.faces() + Block::kFaces - 1) / Block::kFaces, kBlocksPerTask, [&](int64_t begin, int64_t end) {
                Block block;
                for (int64_t i = begin; i < end; ++i)
                {
                    const int64_t first = i * Block::kFaces, last = std::min(first + Block::kFaces, topology_.faces());
                    block.evaluate(topology_, position_, first, last, weights_, given_);
                    keep(block, first, last);
                }
            });
    }

    void keepRooms()
    {
        normals_.resize(size_t(topology_.faces()));
        if (given_ || weights_ != NormalWeights::equal)
            factors_.resize(size_t(weighsFaces() ? topology_.faces() : topology_.begin(topology_.faces())));
    }

    void keep(const Block &block, int64_t first, int64_t last)
    {
        for (int64_t face = first; face < last; ++face)
        {
            normals_[size_t(face)] = block.normal(face - first);
            if (weighsFaces())
                factors_[size_t(face)] = block.weight(face - first);
            else if (block.weighsCorners())
                for (int64_t corner = topology_.begin(face); corner < topology_.end(face); ++corner)
                    factors_[size_t(corner)] = block.cornerWeight(corner);
        }
    }

    bool weighsFaces() const { return !given_ && weights_ == NormalWeights::area; }

    BAS_Vec3d contribution(int64_t face, int64_t corner) const
    {
        const BAS_Vec3d normal(normals_[size_t(face)]);
        return factors_.empty() ? normal : normal * double(factors_[size_t(weighsFaces() ? face : corner)]);
    }

    // Writes the normal of its point to each corner, and marks the points where some face lies farther from it than half the
    // cusp angle, as the cosine `least` says: nearer ones lie within the whole angle of each other.  True when there are
    // any.
    template <class Write>
    bool spreadNormals(const Row<Vector> &points, bool normalized, double least, Row<uint8_t> &isHard, Write &&write) const
    {
        const Real near = Real(least + 1e-6);
        std::atomic<bool> any = false;
        parallelForRange(topology_.faces(), kBlocksPerTask * Block::kFaces, [&](int64_t first, int64_t last) {
            const Topology topology = topology_;
            bool found = false;
            for (int64_t face = first; face < last; ++face)
            {
                const Vector own = normals_[size_t(face)];
                for (int64_t corner = topology.begin(face), end = topology.end(face); corner < end; ++corner)
                {
                    const int64_t point = topology.point(corner);
                    const Vector &normal = points[size_t(point)];
                    write(corner, normal);
                    if (own.dot(normal) > near * (normalized ? Real(1) : normal.length()))
                        continue;
                    std::atomic_ref(isHard[size_t(point)]).store(1, std::memory_order_relaxed);
                    found = true;
                }
            }
            if (found)
                any.store(true, std::memory_order_relaxed);
        });
        return any;
    }

    // Writes to each corner of a point the sum over the faces within the cusp angle of its own.
    template <class Adjacency, class Write>
    void separateNormals(const Adjacency &adjacency, int64_t point, const Cusp &cusp, bool normalize, Fan &fan,
                         Write &&write) const
    {
        const auto *corners = adjacency.around(point);
        const size_t valence = size_t(adjacency.valence(point));
        fan.normals.resize(valence);
        fan.contributions.resize(valence);
        for (size_t i = 0; i < valence; ++i)
        {
            const int64_t face = adjacency.faceOf(topology_, corners[i]);
            fan.normals[i] = BAS_Vec3d(normals_[size_t(face)]);
            fan.contributions[i] = contribution(face, corners[i]);
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
            write(int64_t(corners[own]), normal);
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
    PointWindows windows_;
    int64_t points_;
    Row<Vector> normals_;  // unit length, of each face, when they are kept
    Row<Real> factors_;    // of each corner, or of each face; empty when all are 1
};
}  // namespace host

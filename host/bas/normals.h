#pragma once

#include <host/bas/PointWindows.h>
#include <host/bas/ScatteredNormals.h>
#include <host/bas/WindowCorners.h>

// Normals of points and of face corners, in one kernel, so that two users can never disagree.
//
// A topology offers `faces()`, `begin(face)`, `end(face)` (corner positions), `point(corner)`, the array `points` that it
// reads, and `cornersOfEach(first, last)`, the size of some faces, 0 when it differs; positions are read as
// `position(point)` in 64-bit floats.  Both are copied into the loops: they must be small.

namespace host
{
/// Normals of one mesh: the sums of what its faces give to the points around them.
///
/// Sums run in 64 bits in face order, so the bits never depend on the way in which they are made: where neighbouring faces
/// use neighbouring points, a window of points at a time; elsewhere through the corners around a point, for which
/// `adjacencyOf()` is called once, and returns what converts to a `const CornerAdjacency<Index> &` with `*`.  A point of
/// faces without area only has the zero vector.
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

    /// Write the normals of all points, one after the other.
    void pointNormals(bool normalize, Real *normals) const
    {
        PointWindows windows(points_, topology_, Block::kFaces);
        if (!windows.hasLocality() && !BAS_Threads::enabled())
            windows.unite();
        if (windows.hasLocality())
            return sumWindows(windows, normalize, normals);
        const auto adjacency = adjacencyOf_();
        std::vector<Real, BAS_BlockAllocator<Real>> weights(size_t(isWeighted() ? topology_.begin(topology_.faces()) : 0));
        const auto weightOf = [&](int64_t corner) { return weights.data() + corner; };
        ScatteredNormals<Real, Topology, Adjacency, decltype(weightOf)> scattered(topology_, *adjacency, weightOf,
                                                                                  isWeighted());
        keepFaces(scattered);
        scattered.writePoints(normalize, normals);
    }

    /// Write to `placeOf(corner)`, room for three numbers of its own, the normal of every corner: the sum over the faces
    /// around its point whose normal lies within `cuspAngle` degrees of the corner's own face.  `PackedCorners` are the
    /// fastest places.
    template <class PlaceOf> void cornerNormals(double cuspAngle, bool normalize, const PlaceOf &placeOf) const
    {
        const CuspCosines cusp(cuspAngle);
        if (const PointWindows windows(points_, topology_, Block::kFaces); windows.hasLocality())
            return separateWindows(windows, cusp, normalize, placeOf);
        // What is needed to build it is gone before the faces take room.
        const auto adjacency = adjacencyOf_();
        ScatteredNormals<Real, Topology, Adjacency, PlaceOf> scattered(topology_, *adjacency, placeOf, isWeighted());
        keepFaces(scattered);
        scattered.writeCorners(cusp, normalize, placeOf);
    }

private:
    // A face costs some 6 ns: tasks are 10 us of work and more.
    static constexpr int64_t kBlocksPerTask = 64;

    static constexpr int64_t kLanes = VectorLanes::kCount;

    using Block = FaceBlock<Real>;
    using Adjacency = CornerAdjacency<typename Topology::Index>;

    bool isWeighted() const { return given_ || weights_ != NormalWeights::equal; }

    // Works out a block and calls `visit(firstFace, lastFace)`.
    template <class Visit> void visitBlock(Block &block, int64_t index, Visit &&visit) const
    {
        const int64_t first = index * Block::kFaces, last = std::min(first + Block::kFaces, topology_.faces());
        block.evaluate(topology_, position_, first, last, weights_, given_);
        visit(first, last);
    }

    void sumWindows(const PointWindows &windows, bool normalize, Real *normals) const
    {
        parallelFor(windows.count(), 1, [&](int64_t window) {
            PointSums<Real> sums(windows.first(window), windows.last(window), false);
            Block block;
            for (const int64_t index : windows.blocks(window))
                visitBlock(block, index, [&](int64_t first, int64_t last) { sums.add(topology_, block, first, last); });
            VectorLanes lanes;
            double lengths[kLanes];
            for (int64_t begin = 0; begin < sums.count(); begin += kLanes)
            {
                const int64_t count = std::min(kLanes, sums.count() - begin);
                loadLanes(sums.sums(begin), count, lanes);
                if (normalize)
                    normalizeLanes(lanes, count, lengths);
                storeLanes(lanes, count, normals + 3 * (windows.first(window) + begin));
            }
        });
    }

    template <class PlaceOf>
    void separateWindows(const PointWindows &windows, const CuspCosines &cusp, bool normalize, const PlaceOf &placeOf) const
    {
        const bool streams = topology_.begin(topology_.faces()) * int64_t(sizeof(Vector)) >= kStreamedBytes;
        parallelFor(windows.count(), 1, [&](int64_t window) {
            int64_t faces = 0, count = 0;
            const auto eachBlock = [&](auto &&visit) {
                for (const int64_t index : windows.blocks(window))
                    visit(index * Block::kFaces, std::min((index + 1) * Block::kFaces, topology_.faces()), index);
            };
            eachBlock([&](int64_t first, int64_t last, int64_t) {
                faces += last - first;
                count += topology_.end(last - 1) - topology_.begin(first);
            });
            WindowCorners<Real, typename Topology::Index> corners(windows.first(window), windows.last(window), faces, count,
                                                                  isWeighted());
            Block block;
            eachBlock([&](int64_t first, int64_t last, int64_t) {
                block.evaluate(topology_, position_, first, last, weights_, given_);
                corners.add(topology_, block, first, last);
            });
            corners.finishPoints(cusp, normalize);
            eachBlock([&](int64_t first, int64_t last, int64_t index) {
                corners.noteCreased(topology_, first, last, windows.contains(window, index));
            });
            corners.separate(cusp, normalize);
            eachBlock([&](int64_t first, int64_t last, int64_t index) {
                corners.write(topology_, first, last, windows.contains(window, index), streams, placeOf);
            });
            finishStream();
        });
    }

    template <class Scattered> void keepFaces(Scattered &scattered) const
    {
        const int64_t blocks = (topology_.faces() + Block::kFaces - 1) / Block::kFaces;
        parallelForRange(blocks, kBlocksPerTask, [&](int64_t begin, int64_t end) {
            Block block;
            for (int64_t index = begin; index < end; ++index)
                visitBlock(block, index, [&](int64_t first, int64_t last) { scattered.keep(block, first, last); });
        });
    }

    Topology topology_;
    Position position_;
    const AdjacencyOf &adjacencyOf_;
    NormalWeights weights_;
    const float *given_;
    int64_t points_;
};
}  // namespace host

#pragma once

#include <numbers>
#include <numeric>

#include <host/bas/CornerAdjacency.h>
#include <host/bas/faceGeometry.h>

// Normals of points and of face corners, in one kernel, so that two users can never disagree.
//
// A topology offers `faces()`, `begin(face)`, `end(face)` (corner positions) and `point(corner)`; positions are read as
// `position(point)` in 64-bit floats.

namespace host
{
/// Unit face normals and corner weights of one mesh, gathered around points.
///
/// Weights are the corner's angle times the unit face vector (Thuermer and Wuethrich, "Computing vertex normals from
/// polygonal facets", 1998), summed in 64 bits in face order.  A face without area, or with a coordinate that is no number,
/// adds nothing; a point of such faces only has the zero vector.
template <class Index, class Topology, class Position> class NormalKernel
{
public:
    /// `weights`, if given, holds one weight per corner that replaces the angle.
    NormalKernel(const Topology &topology, const Position &position, int64_t points, int64_t corners, const float *weights)
        : topology_(topology), position_(position), faceOf_(size_t(corners)), normals_(size_t(topology.faces())),
          adjacency_(points, corners, [&topology](int64_t corner) { return topology.point(corner); }), weights_(weights)
    {
        // A face costs about 30 ns here.
        constexpr int64_t kFacesPerTask = 1024;
        parallelFor(topology.faces(), kFacesPerTask, [this](int64_t face) {
            const int64_t begin = topology_.begin(face), end = topology_.end(face);
            std::fill(faceOf_.begin() + begin, faceOf_.begin() + end, Index(face));
            normals_[size_t(face)] =
                direction(newellVector(end - begin, [&](int64_t i) { return position_(topology_.point(begin + i)); }));
        });
    }

    /// Call `write(point, normal)` for every point.
    template <class Write> void pointNormals(int64_t points, bool normalize, Write &&write) const
    {
        parallelFor(points, kPointsPerTask, [&](int64_t point) {
            BAS_Vec3d sum(0.0);
            for (Index at = start(point); at < start(point + 1); ++at)
                sum += contribution(adjacency_.corners[size_t(at)]);
            write(point, normalize ? direction(sum) : sum);
        });
    }

    /// Call `write(corner, normal)` for every corner: the average of the faces around its point whose normal lies within
    /// `cuspAngle` degrees of the corner's own face.
    template <class Write> void cornerNormals(int64_t points, double cuspAngle, bool normalize, Write &&write) const
    {
        // The cosines of 60 and 90 degrees are not exact, and 32-bit positions add 1e-7: the test includes its border.
        const double radians = cuspAngle * std::numbers::pi / 180.0;
        const double smallestCosine = std::cos(radians) - 1e-6;
        const double smoothCosine = std::cos(0.5 * radians) + 1e-6;
        parallelForRange(points, kPointsPerTask, [&](int64_t first, int64_t last) {
            std::vector<BAS_Vec3d> around;
            for (int64_t point = first; point < last; ++point)
            {
                const Index *corners = adjacency_.corners.data() + start(point);
                const size_t valence = size_t(start(point + 1) - start(point));
                around.resize(valence);
                for (size_t i = 0; i < valence; ++i)
                    around[i] = contribution(corners[i]);
                if (allWithin(corners, valence, smoothCosine))
                {
                    const BAS_Vec3d sum = std::accumulate(around.begin(), around.end(), BAS_Vec3d(0.0));
                    for (size_t own = 0; own < valence; ++own)
                        write(int64_t(corners[own]), normalize ? direction(sum) : sum);
                    continue;
                }
                for (size_t own = 0; own < valence; ++own)
                {
                    const BAS_Vec3d &normal = faceNormal(corners[own]);
                    BAS_Vec3d sum(0.0);
                    for (size_t i = 0; i < valence; ++i)
                        if (i == own || normal.dot(faceNormal(corners[i])) >= smallestCosine)
                            sum += around[i];
                    write(int64_t(corners[own]), normalize ? direction(sum) : sum);
                }
            }
        });
    }

private:
    // A point of valence 4 costs about 100 ns here.
    static constexpr int64_t kPointsPerTask = 512;

    Index start(int64_t point) const { return adjacency_.starts[size_t(point)]; }
    const BAS_Vec3d &faceNormal(Index corner) const { return normals_[size_t(faceOf_[size_t(corner)])]; }

    // True when every face normal around a point lies so near to their mean that each pair is within the cusp angle: then
    // all corners share one sum, and a point of many faces costs no more than its faces.
    bool allWithin(const Index *corners, size_t valence, double smoothCosine) const
    {
        BAS_Vec3d mean(0.0);
        for (size_t i = 0; i < valence; ++i)
            mean += faceNormal(corners[i]);
        mean = direction(mean);
        return std::all_of(corners, corners + valence,
                           [&](Index corner) { return mean.dot(faceNormal(corner)) >= smoothCosine; });
    }

    BAS_Vec3d contribution(Index corner) const
    {
        const BAS_Vec3d &normal = faceNormal(corner);
        // A zero normal must stay without effect even where the angle is not a number.
        if (normal == BAS_Vec3d(0.0))
            return normal;
        return normal * (weights_ ? double(weights_[corner]) : angle(corner));
    }

    double angle(Index corner) const
    {
        const Index face = faceOf_[size_t(corner)];
        const int64_t begin = topology_.begin(face), corners = topology_.end(face) - begin;
        return cornerAngle(corners, corner - begin, [&](int64_t i) { return position_(topology_.point(begin + i)); });
    }

    const Topology &topology_;
    const Position &position_;
    std::vector<Index, BAS_BlockAllocator<Index>> faceOf_;
    std::vector<BAS_Vec3d, BAS_BlockAllocator<BAS_Vec3d>> normals_;
    CornerAdjacency<Index> adjacency_;
    const float *weights_;
};
}  // namespace host

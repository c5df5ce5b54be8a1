#pragma once

#include <host/bas/CornerAdjacency.h>
#include <host/bas/faceGeometry.h>

// Normals of points and of face corners, in one kernel, so that two users can never disagree.
//
// A topology offers `faces()`, `begin(face)`, `end(face)` (corner positions) and `point(corner)`; positions are read as
// `position(point)` in 64-bit floats.

namespace host
{
/// What a face counts for around a point.
enum class NormalWeights
{
    angle,  ///< the angle of its corner (Thuermer and Wuethrich, "Computing vertex normals from polygonal facets", 1998)
    equal,  ///< one
    area    ///< its area
};

/// Unit face normals and weights of one mesh, gathered around points.
///
/// Sums run in 64 bits in face order.  A face without area, or with a coordinate that is no number, adds nothing; a point of
/// such faces only has the zero vector.  `Real` is the precision in which normals and weights are kept in between.
template <class Real, class Index, class Topology> class NormalKernel
{
public:
    /// `given`, if not null, holds one weight per corner that is taken instead.
    template <class Position>
    NormalKernel(const CornerAdjacency<Index> &adjacency, const Topology &topology, const Position &position,
                 NormalWeights weights, const float *given = nullptr)
        : adjacency_(adjacency), topology_(topology), normals_(size_t(topology.faces())),
          weighsFaces_(!given && weights == NormalWeights::area)
    {
        const int64_t faces = topology.faces();
        if (given || weights != NormalWeights::equal)
            weights_.resize(size_t(weighsFaces_ ? faces : topology.begin(faces)));
        parallelForRange(faces, kFacesPerTask, [&](int64_t first, int64_t last) {
            std::vector<BAS_Vec3d> corners;
            for (int64_t face = first; face < last; ++face)
            {
                const int64_t begin = topology.begin(face), end = topology.end(face);
                corners.resize(size_t(end - begin));
                for (int64_t corner = begin; corner < end; ++corner)
                    corners[size_t(corner - begin)] = position(topology.point(corner));
                addFace(face, begin, corners, given);
            }
        });
    }

    /// Call `write(point, normal)` for every point.
    template <class Write> void pointNormals(bool normalize, Write &&write) const
    {
        parallelFor(adjacency_.points(), kPointsPerTask, [&](int64_t point) {
            BAS_Vec3d sum(0.0);
            const Index *corners = adjacency_.around(point);
            for (int64_t i = 0, valence = adjacency_.valence(point); i < valence; ++i)
            {
                const int64_t face = adjacency_.faceOf(topology_, corners[i]);
                sum += contribution(face, corners[i]);
            }
            write(point, normalize ? direction(sum) : sum);
        });
    }

    /// Call `write(corner, normal)` for every corner: the sum over the faces around its point whose normal lies within
    /// `cuspAngle` degrees of the corner's own face.
    template <class Write> void cornerNormals(double cuspAngle, bool normalize, Write &&write) const
    {
        // The cosines of 60 and 90 degrees are not exact, and 32-bit positions add 1e-7: the test includes its border.
        const double radians = cuspAngle * std::numbers::pi / 180.0;
        const Cusp cusp{std::cos(radians) - 1e-6, std::cos(0.5 * radians) + 1e-6};
        parallelForRange(adjacency_.points(), kPointsPerTask, [&](int64_t first, int64_t last) {
            Fan fan;
            for (int64_t point = first; point < last; ++point)
            {
                gather(point, fan);
                const Index *corners = adjacency_.around(point);
                if (isSmooth(fan.normals, cusp))
                {
                    BAS_Vec3d sum(0.0);
                    for (const BAS_Vec3d &part : fan.contributions)
                        sum += part;
                    const BAS_Vec3d normal = normalize ? direction(sum) : sum;
                    for (size_t own = 0; own < fan.normals.size(); ++own)
                        write(int64_t(corners[own]), normal);
                    continue;
                }
                for (size_t own = 0; own < fan.normals.size(); ++own)
                {
                    BAS_Vec3d sum(0.0);
                    for (size_t i = 0; i < fan.normals.size(); ++i)
                        if (i == own || fan.normals[own].dot(fan.normals[i]) >= cusp.pair)
                            sum += fan.contributions[i];
                    write(int64_t(corners[own]), normalize ? direction(sum) : sum);
                }
            }
        });
    }

private:
    // A quad costs some 40 ns and a point of valence 4 some 50 ns here: a task is 40 us of work.
    static constexpr int64_t kFacesPerTask = 1024;
    static constexpr int64_t kPointsPerTask = 1024;

    using Vector = Imath::Vec3<Real>;

    // The faces around one point.
    struct Fan
    {
        std::vector<BAS_Vec3d> normals;
        std::vector<BAS_Vec3d> contributions;
    };

    // The least cosine of the angle between two normals that count as one surface, and between one and the mean of all.
    struct Cusp
    {
        double pair;
        double mean;
    };

    void addFace(int64_t face, int64_t begin, const std::vector<BAS_Vec3d> &corners, const float *given)
    {
        const int64_t count = int64_t(corners.size());
        const auto at = [&corners](int64_t i) { return corners[size_t(i)]; };
        const BAS_Vec3d newell = newellVector(count, at);
        const BAS_Vec3d normal = direction(newell);
        normals_[size_t(face)] = Vector(normal);
        if (weights_.empty())
            return;
        // A weight of 0 keeps a face out even where its angles are not numbers.
        const bool counts = normal != BAS_Vec3d(0.0);
        if (weighsFaces_)
            weights_[size_t(face)] = counts ? Real(0.5 * newell.length()) : Real(0);
        else if (!counts || given)
            for (int64_t i = begin; i < begin + count; ++i)
                weights_[size_t(i)] = counts ? Real(given[i]) : Real(0);
        else
            weighByAngles(begin, corners);
    }

    void weighByAngles(int64_t begin, const std::vector<BAS_Vec3d> &corners)
    {
        const size_t count = corners.size();
        BAS_Vec3d previous = corners.front() - corners.back();
        for (size_t i = 0; i < count; ++i)
        {
            const BAS_Vec3d next = corners[i + 1 < count ? i + 1 : 0] - corners[i];
            const bool isPlain = next != BAS_Vec3d(0.0) && previous != BAS_Vec3d(0.0);
            const BAS_Vec3d across = previous % next;
            weights_[size_t(begin) + i] =
                Real(isPlain ? angleOf(std::sqrt(across.dot(across)), -next.dot(previous))
                             : cornerAngle(int64_t(count), int64_t(i), [&](int64_t k) { return corners[size_t(k)]; }));
            previous = next;
        }
    }

    BAS_Vec3d contribution(int64_t face, int64_t corner) const
    {
        const BAS_Vec3d normal(normals_[size_t(face)]);
        return weights_.empty() ? normal : normal * double(weights_[size_t(weighsFaces_ ? face : corner)]);
    }

    void gather(int64_t point, Fan &fan) const
    {
        const Index *corners = adjacency_.around(point);
        const size_t valence = size_t(adjacency_.valence(point));
        fan.normals.resize(valence);
        fan.contributions.resize(valence);
        for (size_t i = 0; i < valence; ++i)
        {
            const int64_t face = adjacency_.faceOf(topology_, corners[i]);
            fan.normals[i] = BAS_Vec3d(normals_[size_t(face)]);
            fan.contributions[i] = contribution(face, corners[i]);
        }
    }

    // True when all faces around a point count as one surface.  Then its corners share one sum, and where every normal lies
    // near the mean of all this takes one look at each, so that a point of many faces costs no more than its faces.
    static bool isSmooth(const std::vector<BAS_Vec3d> &normals, const Cusp &cusp)
    {
        constexpr size_t kFew = 6;
        if (normals.size() <= kFew)
        {
            for (size_t i = 1; i < normals.size(); ++i)
                for (size_t j = 0; j < i; ++j)
                    if (!(normals[i].dot(normals[j]) >= cusp.pair))
                        return false;
            return true;
        }
        BAS_Vec3d mean(0.0);
        for (const BAS_Vec3d &normal : normals)
            mean += normal;
        mean = direction(mean);
        return std::all_of(normals.begin(), normals.end(),
                           [&](const BAS_Vec3d &normal) { return mean.dot(normal) >= cusp.mean; });
    }

    template <class T> using Row = std::vector<T, BAS_BlockAllocator<T>>;

    const CornerAdjacency<Index> &adjacency_;
    const Topology &topology_;
    Row<Vector> normals_;  // unit length, of each face
    Row<Real> weights_;    // of each corner, or of each face; empty when all are 1
    bool weighsFaces_;
};
}  // namespace host

#pragma once

#include <array>
#include <type_traits>
#include <vector>

#include <host/bas/faceGeometry.h>
#include <host/bas/packedFaces.h>

namespace host
{
/// What a face counts for around a point.
enum class NormalWeights
{
    angle,  ///< the angle of its corner (Thuermer and Wuethrich, "Computing vertex normals from polygonal facets", 1998)
    equal,  ///< one
    area    ///< its area
};

/// The unit normals of a few neighbouring faces, and what each adds to the normals of its points.
///
/// A face without area, or with a coordinate that is no number, has the zero vector and adds nothing.  `Real` is the
/// precision in which normals and weights are kept in between.
template <class Real> class FaceBlock
{
public:
    using Vector = Imath::Vec3<Real>;

    static constexpr int64_t kFaces = VectorLanes::kCount;

    /// Work out faces [first, last), at most `kFaces`.  `topology` offers `begin(face)` and `end(face)` (corner positions)
    /// and `point(corner)`; `position(point)` reads a point as 64-bit floats.  With `PackedPositions`, which are the
    /// fastest, it also offers `cornersOfEach(first, last)`, 0 for faces of different size, and the array `points` that it
    /// reads. `given`, if not null, holds one weight per corner of the mesh that is taken instead of `weights`.
    template <class Topology, class Position>
    void evaluate(const Topology topology, const Position position, int64_t first, int64_t last, NormalWeights weights,
                  const float *given)
    {
        begin_ = topology.begin(first);
        weighsCorners_ = given || weights == NormalWeights::angle;
        const int64_t faces = last - first;
        double areas[kFaces];  // twice the area of each
        if (!packedFaces(topology, position, first, last).normals(lanes_, areas))
        {
            for (int64_t face = first; face < last; ++face)
                visitCorners(topology, position, face, [&](auto count, const BAS_Vec3d *at) {
                    lanes_.set(face - first, newellVector(count, [at](int64_t k) { return at[k]; }));
                });
            normalizeLanes(lanes_, faces, areas);
        }
        for (int64_t i = 0; i < faces; ++i)
            normals_[size_t(i)] = Vector(Real(lanes_.x[i]), Real(lanes_.y[i]), Real(lanes_.z[i]));
        if (weighsCorners_)
            weighCorners(topology, position, first, last, given);
        else
            for (int64_t i = 0; i < faces; ++i)
                factors_[size_t(i)] = weights == NormalWeights::area ? Real(0.5 * areas[i]) : Real(1);
    }

    /// True when each corner has a weight of its own.
    bool weighsCorners() const { return weighsCorners_; }

    /// Of the i-th face of the block: its unit normal, and the weight of it or of a corner of the mesh.
    const Vector &normal(int64_t i) const { return normals_[size_t(i)]; }
    Real weight(int64_t i) const { return factors_[size_t(i)]; }
    Real cornerWeight(int64_t corner) const { return weights_[size_t(corner - begin_)]; }

private:
    // Triangles and quads are worked out with loops unrolled; a call for each would cost as much as the work.
    template <class Topology, class Position, class Visit>
    [[gnu::always_inline]] inline void visitCorners(const Topology &topology, const Position &position, int64_t face,
                                                    Visit &&visit)
    {
        const int64_t begin = topology.begin(face), count = topology.end(face) - begin;
        const auto at = [&](int64_t i) { return position(topology.point(begin + i)); };
        if (count == 4)
            visit(std::integral_constant<int64_t, 4>(), std::array{at(0), at(1), at(2), at(3)}.data());
        else if (count == 3)
            visit(std::integral_constant<int64_t, 3>(), std::array{at(0), at(1), at(2)}.data());
        else
        {
            corners_.resize(size_t(count));
            for (int64_t i = 0; i < count; ++i)
                corners_[size_t(i)] = at(i);
            visit(count, corners_.data());
        }
    }

    template <class Topology, class Position>
    void noteTurns(const Topology &topology, const Position &position, int64_t first, int64_t last)
    {
        turns_.resize(topology.end(last - 1) - begin_);
        if (packedFaces(topology, position, first, last).turns(turns_))
            return;
        for (int64_t face = first; face < last; ++face)
            visitCorners(topology, position, face, [&](auto count, const BAS_Vec3d *at) {
                if (count == 0)
                    return;
                const int64_t corner = topology.begin(face) - begin_;
                BAS_Vec3d previous = at[0] - at[count - 1];
                for (int64_t i = 0; i < count; ++i)
                {
                    const BAS_Vec3d next = at[i + 1 < count ? i + 1 : 0] - at[i], across = previous % next;
                    turns_.across[size_t(corner + i)] = across.dot(across);
                    turns_.along[size_t(corner + i)] = -previous.dot(next);
                    previous = next;
                }
            });
    }

    template <class Topology, class Position>
    void weighCorners(const Topology &topology, const Position &position, int64_t first, int64_t last, const float *given)
    {
        const int64_t count = topology.end(last - 1) - begin_;
        weights_.resize(size_t(count));
        bool hasRepeats = false;
        if (given)
            std::copy_n(given + begin_, count, weights_.begin());
        else
        {
            noteTurns(topology, position, first, last);
            angles_.resize(size_t(count));
            hasRepeats = !anglesOfLanes(turns_, count, angles_.data());
            std::copy_n(angles_.begin(), count, weights_.begin());
        }
        for (int64_t face = first; face < last; ++face)
        {
            // A weight of 0 keeps a face out even where its angles are not numbers.
            const auto weights = weights_.begin() + (topology.begin(face) - begin_);
            const int64_t corners = topology.end(face) - topology.begin(face);
            if (normals_[size_t(face - first)] == Vector(Real(0)))
                std::fill_n(weights, corners, Real(0));
            else if (hasRepeats)
                for (int64_t i = 0; i < corners; ++i)
                    weights[i] = Real(cornerAngle(
                        corners, i, [&](int64_t k) { return position(topology.point(topology.begin(face) + k)); }));
        }
    }

    VectorLanes lanes_;
    std::array<Vector, kFaces> normals_;
    std::array<Real, kFaces> factors_;
    bool weighsCorners_ = false;
    int64_t begin_ = 0;  // the first corner
    std::vector<BAS_Vec3d> corners_;
    TurnLanes turns_;
    std::vector<double> angles_;
    std::vector<Real> weights_;
};
}  // namespace host

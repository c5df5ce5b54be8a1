#pragma once

#include <algorithm>
#include <array>
#include <type_traits>
#include <vector>

#include <host/bas/CornerLanes.h>
#include <host/bas/faceGeometry.h>

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

    /// Work out faces [first, last), at most `kFaces`, of a topology as in normals.h.  `PackedPositions` are the fastest to
    /// read.  `given`, if not null, holds one weight per corner of the mesh that is taken instead of `weights`.
    template <class Topology, class Position>
    void evaluate(const Topology topology, const Position position, int64_t first, int64_t last, NormalWeights weights,
                  const float *given)
    {
        begin_ = topology.begin(first);
        weighsCorners_ = given || weights == NormalWeights::angle;
        const int64_t faces = last - first;
        double areas[kFaces];  // twice the area of each
        CornerLanes<LaneOf<Position>> corners;
        const bool isEven = readCorners(topology, position, first, last, corners);
        cornersOfEach_ = isEven ? corners.corners : 0;
        if (isEven)
            corners.normals(normals_, areas);
        else
        {
            for (int64_t face = first; face < last; ++face)
                visitCorners(topology, position, face, [&](auto count, const BAS_Vec3d *at) {
                    normals_.set(face - first, newellVector(count, [at](int64_t k) { return at[k]; }));
                });
            normalizeLanes(normals_, faces, areas);
        }
        if (!weighsCorners_ && weights == NormalWeights::area)
            std::transform(areas, areas + faces, factors_.begin(), [](double area) { return Real(0.5 * area); });
        else
            factors_.fill(Real(1));
        weighLanes(normals_, factors_.data(), faces, parts_.data());
        if (!weighsCorners_)
            return;
        weights_.resize(size_t(topology.end(last - 1) - begin_));
        bool areKnown = true;
        if (given)
            std::copy_n(given + begin_, weights_.size(), weights_.begin());
        else
        {
            areKnown = isEven ? corners.angles(weights_.data()) : noteAngles(topology, position, first, last);
            for (double &weight : weights_)
                weight = Real(weight);
        }
        mendWeights(topology, position, first, last, areas, areKnown);
    }

    /// The corners of each face: 3 or 4; 0 when they differ or have more.
    int64_t cornersOfEach() const { return cornersOfEach_; }

    /// For each face its unit normal, and 1, all times the weight that the face has.
    const BAS_Vec4d *parts() const { return parts_.data(); }

    /// The weight of each corner, from that of the first face on; null when the faces have weights.
    const double *cornerWeights() const { return weighsCorners_ ? weights_.data() : nullptr; }

    /// The unit normals of the faces, in full precision.
    const VectorLanes &normals() const { return normals_; }

    /// What a corner of the i-th face weighs in the end.
    double weight(int64_t i, int64_t corner) const
    {
        return weighsCorners_ ? weights_[size_t(corner - begin_)] : parts_[size_t(i)].w;
    }

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

    // False when some angle is not known from the corner's two edges.
    template <class Topology, class Position>
    bool noteAngles(const Topology &topology, const Position &position, int64_t first, int64_t last)
    {
        turns_.resize(int64_t(weights_.size()));
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
        return anglesOfLanes(turns_, int64_t(weights_.size()), weights_.data());
    }

    // A weight of 0 keeps a face without area out even where its angles are not numbers.
    template <class Topology, class Position>
    void mendWeights(const Topology &topology, const Position &position, int64_t first, int64_t last, const double *areas,
                     bool areKnown)
    {
        if (areKnown && std::find(areas, areas + (last - first), 0.0) == areas + (last - first))
            return;
        for (int64_t face = first; face < last; ++face)
        {
            const auto weights = weights_.begin() + (topology.begin(face) - begin_);
            const int64_t corners = topology.end(face) - topology.begin(face);
            if (areas[face - first] == 0.0)
                std::fill_n(weights, corners, 0.0);
            else if (!areKnown)
                for (int64_t i = 0; i < corners; ++i)
                    weights[i] = Real(cornerAngle(
                        corners, i, [&](int64_t k) { return position(topology.point(topology.begin(face) + k)); }));
        }
    }

    VectorLanes normals_ = {};
    std::array<Real, kFaces> factors_;
    std::array<BAS_Vec4d, kFaces> parts_;
    bool weighsCorners_ = false;
    int64_t begin_ = 0;  // the first corner
    int64_t cornersOfEach_ = 0;
    std::vector<BAS_Vec3d> corners_;
    TurnLanes turns_;
    std::vector<double> weights_;  // in the precision of `Real`
};
}  // namespace host

#include <rq/surface/detail/curveDistance.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <host/bas/Parallel.h>
#include <rq/data/DANumeric.h>
#include <rq/surface/detail/CurvePositions.h>

namespace
{
// A span costs 1 us where few pieces do, and a hundred times that where many are wanted.
constexpr int64_t kSpansPerTask = 32;

constexpr int kMostPieces = 65536;

double distanceTo(const BAS_Vec3d &point, const BAS_Vec3d &from, const BAS_Vec3d &to)
{
    const BAS_Vec3d along = to - from;
    const double length2 = along.length2();
    const double t = length2 > 0.0 ? std::clamp((point - from).dot(along) / length2, 0.0, 1.0) : 0.0;
    return (point - from - along * t).length();
}

/// One span in space.
class Path
{
public:
    Path(const rq::SpanShapes &shapes, int64_t curve, int64_t span, const rq::CurvePositions &positions)
        : shapes_(shapes), positions_(positions), curve_(curve), span_(span), order_(shapes.order(curve))
    {
        double extent = 0.0;
        for (int i = 0; i < order_; ++i)
        {
            vertices_[i] = positions[shapes.vertex(curve, span, i)];
            const BAS_Vec3d place = positions.divided(vertices_[i]);
            extent = std::max({extent, std::abs(place.x), std::abs(place.y), std::abs(place.z)});
        }
        precision_ = 2.0 * extent *
                     (positions.isSingle() ? double(std::numeric_limits<float>::epsilon())
                                           : 8.0 * std::numeric_limits<double>::epsilon());
        bend_ = greatestBend();
    }

    /// What rounding may move a point by.
    double precision() const { return precision_; }

    BAS_Vec3d at(double t) const
    {
        double weights[rq::kLargestOrder];
        shapes_.weights(curve_, span_, t, weights);
        BAS_Vec4d sum(0.0);
        for (int i = 0; i < order_; ++i)
            sum += vertices_[i] * weights[i];
        return positions_.divided(sum);
    }

    /// Whether the path from `begin` to `end` stays within `bound` of the straight line between its points there. `farthest`
    /// becomes the distance of a point that does not.
    bool staysWithin(double bound, double begin, double end, double &farthest) const
    {
        const Chord chord = {at(begin), at(end), bound};
        return staysWithin(chord, begin, 0.0, end, 0.0, farthest);
    }

private:
    struct Chord
    {
        BAS_Vec3d from, to;
        double bound;
    };

    /// The same between two points at known distances from the chord.  Of a path that bends by at most `bend_`, the part
    /// between them is no further than the farther one and an eighth of the bend over the square of the step.
    bool staysWithin(const Chord &chord, double begin, double beginDistance, double end, double endDistance,
                     double &farthest) const
    {
        constexpr double kClose = 1e-6;
        const double slack = bend_ * (end - begin) * (end - begin) / 8.0;
        if (!(std::max(beginDistance, endDistance) + slack >= chord.bound))
            return true;
        const double middle = begin + 0.5 * (end - begin), distance = distanceTo(at(middle), chord.from, chord.to);
        if (distance >= chord.bound || slack < kClose * chord.bound)
        {
            farthest = std::max(distance, chord.bound);
            return false;
        }
        return staysWithin(chord, begin, beginDistance, middle, distance, farthest) &&
               staysWithin(chord, middle, distance, end, endDistance, farthest);
    }

    /// The greatest second derivative, from differences over steps that are small for curves of this order, and a quarter
    /// more for what lies between.
    double greatestBend() const
    {
        const int steps = 4 * std::max(order_, 8);
        double bend = 0.0;
        BAS_Vec3d before = at(0.0), here = at(1.0 / steps);
        for (int i = 2; i <= steps; ++i)
        {
            const BAS_Vec3d next = at(double(i) / steps);
            bend = std::max(bend, (before - here - here + next).length());
            before = here;
            here = next;
        }
        return 1.25 * bend * steps * steps;
    }

    const rq::SpanShapes &shapes_;
    const rq::CurvePositions &positions_;
    int64_t curve_;
    int64_t span_;
    int order_;
    double precision_;
    double bend_;
    BAS_Vec4d vertices_[rq::kLargestOrder];
};

/// The least number of even pieces, from `pieces` on, that stay within `distance`.
int piecesWithin(const Path &path, double distance, int pieces)
{
    const double bound = std::max(distance - path.precision(), path.precision());
    int worst = 0;  // where the last number failed: the next is likely to fail near
    while (pieces < kMostPieces)
    {
        double farthest = 0.0;
        bool stays = true;
        for (int i = 0; i < pieces && stays; ++i)
        {
            const int piece = (worst + i) % pieces;
            stays = path.staysWithin(bound, double(piece) / pieces, double(piece + 1) / pieces, farthest);
            if (!stays)
                worst = piece;
        }
        if (stays)
            return pieces;
        // Deviations fall with the square of the number; take care not to jump over the least that does.
        const double likely = 0.7 * pieces * std::sqrt(farthest / bound);
        const int next = int(std::clamp(likely, double(pieces + 1), double(kMostPieces)));
        worst = int(int64_t(worst) * next / pieces);
        pieces = next;
    }
    return kMostPieces;
}
}  // namespace

std::vector<int> rq::segmentsWithin(const SpanShapes &shapes, const RQ_AttributeList &vertex, double distance,
                                    RQ_CountArray &spans)
{
    const BAS_IntrusivePtr<RQ_DANumeric<int64_t>> counts(new RQ_DANumeric<int64_t>(shapes.curves()));
    for (int64_t curve = 0; curve < shapes.curves(); ++curve)
        counts->data()[curve] = shapes.spans(curve);
    spans.init(counts);

    std::vector<CurvePositions> moving;
    for (int segment = 0; segment < vertex.getSegments(); ++segment)
        if (segment == 0 || vertex.get("P", segment) != vertex.get("P", segment - 1))
            if (const CurvePositions positions(vertex, segment, shapes.vertices()); positions.isValid())
                moving.push_back(positions);

    std::vector<int> pieces(size_t(spans.sumCounts()), 1);
    const Counts offsets(spans);
    host::parallelForWeighted(
        shapes.curves(), kSpansPerTask, [&](int64_t curve) { return offsets.end(curve); },
        [&](int64_t begin, int64_t end) {
            for (int64_t curve = begin; curve < end; ++curve)
                for (int64_t span = 0; span < offsets.count(curve); ++span)
                    for (const rq::CurvePositions &vertices : moving)
                        if (!shapes.isEmpty(curve, span))
                        {
                            int &count = pieces[size_t(offsets.begin(curve) + span)];
                            count = piecesWithin(Path(shapes, curve, span, vertices), distance, count);
                        }
        });
    return pieces;
}

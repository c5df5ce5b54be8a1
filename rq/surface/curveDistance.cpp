#include <rq/surface/detail/curveDistance.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <host/bas/Parallel.h>
#include <rq/data/DANumeric.h>
#include <rq/surface/detail/sampledList.h>

namespace
{
// A span costs 1 us where few pieces do, and a hundred times that where many are wanted.
constexpr int64_t kSpansPerTask = 32;

constexpr int kMostPieces = 65536;

/// The positions of one motion segment as homogeneous vertices.
struct Vertices
{
    Vertices(const RQ_AttributeList &list, int segment)
        : positions(list.get("P", segment)),
          homogeneous(list.get("P", segment)->getTypeInfo() == RQ_TYPE_HPOINT && positions.tupleSize() > 3),
          single(RQsizeof(list.get("P", segment)->getStorage()) <= 4 && RQisFloat(list.get("P", segment)->getStorage()))
    {
        if (const RQ_DataArray *given = rq::rationalWeights(list, list.getIndex("P"), segment))
            weights = rq::Values<double>(*given);
    }

    BAS_Vec4d operator[](int64_t i) const
    {
        const BAS_Vec4d point(positions(i, 0), positions(i, 1), positions(i, 2), homogeneous ? positions(i, 3) : 1.0);
        return weights.entries() > 0 ? point * weights[i] : point;
    }

    rq::Values<double> positions;
    rq::Values<double> weights;
    bool homogeneous;
    bool single;
};

BAS_Vec3d divided(const BAS_Vec4d &p) { return BAS_Vec3d(p.x, p.y, p.z) * (p.w == 0.0 ? 0.0 : 1.0 / p.w); }

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
    Path(const rq::SpanShapes &shapes, int64_t curve, int64_t span, const Vertices &vertices)
        : shapes_(shapes), curve_(curve), span_(span), order_(shapes.order(curve))
    {
        double extent = 0.0;
        for (int i = 0; i < order_; ++i)
        {
            vertices_[i] = vertices[shapes.vertex(curve, span, i)];
            const BAS_Vec3d place = divided(vertices_[i]);
            extent = std::max({extent, std::abs(place.x), std::abs(place.y), std::abs(place.z)});
        }
        precision_ =
            2.0 * extent *
            (vertices.single ? double(std::numeric_limits<float>::epsilon()) : 8.0 * std::numeric_limits<double>::epsilon());
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
        return divided(sum);
    }

    /// How far the path goes from the straight line between its points at `begin` and `end`; looked at closely only where
    /// that decides whether it is below `bound`.
    double deviation(double begin, double end, double bound) const
    {
        constexpr int kPlaces = 8;
        const BAS_Vec3d from = at(begin), to = at(end);
        const double step = (end - begin) / kPlaces;
        double farthest = 0.0, place = begin;
        for (int i = 1; i < kPlaces; ++i)
            if (const double far = distanceTo(at(begin + step * i), from, to); far > farthest)
            {
                farthest = far;
                place = begin + step * i;
            }
        if (farthest >= bound || farthest < 0.9 * bound)
            return farthest;
        // The farthest point lies within a step of the farthest place: narrow it down by thirds.
        double low = place - step, high = place + step;
        for (int i = 0; i < 20; ++i)
        {
            const double a = low + (high - low) / 3.0, b = high - (high - low) / 3.0;
            const double farA = distanceTo(at(a), from, to), farB = distanceTo(at(b), from, to);
            farthest = std::max({farthest, farA, farB});
            (farA < farB ? low : high) = farA < farB ? a : b;
        }
        return farthest;
    }

private:
    const rq::SpanShapes &shapes_;
    int64_t curve_;
    int64_t span_;
    int order_;
    double precision_;
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
        for (int i = 0; i < pieces && farthest < bound; ++i)
        {
            const int piece = (worst + i) % pieces;
            farthest = path.deviation(double(piece) / pieces, double(piece + 1) / pieces, bound);
            if (farthest >= bound)
                worst = piece;
        }
        if (!(farthest >= bound))
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

    std::vector<Vertices> moving;
    for (int segment = 0; segment < vertex.getSegments(); ++segment)
        if (const RQ_DataArrayHandle &positions = vertex.get("P", segment);
            positions && positions->entries() >= shapes.vertices() && positions->getTupleSize() > 2)
            if (segment == 0 || positions != vertex.get("P", segment - 1))
                moving.emplace_back(vertex, segment);

    std::vector<int> pieces(size_t(spans.sumCounts()), 1);
    const Counts offsets(spans);
    host::parallelForWeighted(
        shapes.curves(), kSpansPerTask, [&](int64_t curve) { return offsets.end(curve); },
        [&](int64_t begin, int64_t end) {
            for (int64_t curve = begin; curve < end; ++curve)
                for (int64_t span = 0; span < offsets.count(curve); ++span)
                    for (const Vertices &vertices : moving)
                        if (!shapes.isEmpty(curve, span))
                        {
                            int &count = pieces[size_t(offsets.begin(curve) + span)];
                            count = piecesWithin(Path(shapes, curve, span, vertices), distance, count);
                        }
        });
    return pieces;
}

#pragma once

#include <rq/data/Counts.h>
#include <rq/data/Positions.h>
#include <rq/data/Values.h>
#include <rq/surface/PrimCurveMesh.h>
#include <rq/surface/detail/curveWeights.h>

namespace rq
{
/// The whole spans that `vertices` make.
int64_t spanCount(RQ_Basis basis, int order, bool periodic, int64_t vertices);

/// How every span of every curve of a mesh is shaped by its vertices.
///
/// Ownership  keeps what it reads of the mesh
/// Threads    safe to read from any thread
class SpanShapes
{
public:
    explicit SpanShapes(const RQ_PrimCurveMesh &mesh);

    RQ_Basis basis() const { return basis_; }
    bool wraps() const { return wraps_; }

    int64_t curves() const { return counts_.entries(); }
    int64_t vertices() const { return counts_.sum(); }
    int64_t firstVertex(int64_t curve) const { return counts_.begin(curve); }
    int64_t lastVertex(int64_t curve) const { return counts_.end(curve) - 1; }
    int64_t vertices(int64_t curve) const { return counts_.count(curve); }
    int order(int64_t curve) const { return orders_.entries() > 0 ? orders_[curve] : order_; }
    int step(int64_t curve) const { return RQbasisStep(basis_, order(curve)); }

    /// The spans of a curve, those of no length included.
    int64_t spans(int64_t curve) const { return spanCount(basis_, order(curve), wraps_, vertices(curve)); }

    /// When all curves have as many vertices and the same order: they are sampled alike.
    bool uniform() const { return counts_.uniform() >= 0 && orders_.entries() == 0; }

    /// Whether all spans of an order have the same weights and a length.
    bool alike() const { return knots_.entries() == 0 && !spread_.isValid(); }

    bool isEmpty(int64_t curve, int64_t span) const
    {
        const double *knots = knots_.entries() > 0 ? knotsOf(curve, span) : nullptr;
        return knots && !(knots[order(curve) - 2] < knots[order(curve) - 1]);
    }

    /// The number of the last span with a length, -1 without.
    int64_t lastSpan(int64_t curve) const
    {
        int64_t span = spans(curve) - 1;
        while (span >= 0 && isEmpty(curve, span))
            --span;
        return span;
    }

    /// What the vertices of a span count for at `t` in [0, 1] of it; `order` weights.
    void weights(int64_t curve, int64_t span, double t, double *weights) const;

    /// The vertex, of all of the mesh, that is vertex `i` of a span.
    int64_t vertex(int64_t curve, int64_t span, int64_t i) const
    {
        return firstVertex(curve) + (span * step(curve) + i) % vertices(curve);
    }

private:
    // The knots that shape a span, beside the first and the last of its vertices' own.
    const double *knotsOf(int64_t curve, int64_t span) const { return knots_.data() + firstKnot(curve) + span + 1; }
    int64_t firstKnot(int64_t curve) const
    {
        return knotCounts_.entries() > 0 ? knotCounts_.begin(curve)
                                         : firstVertex(curve) + curve * (wraps_ ? 2 * order_ - 1 : order_);
    }

    Counts counts_;
    Counts knotCounts_;  // with orders
    Values<int32_t> orders_;
    Values<double> knots_;
    Positions spread_;  // positions that breakpoints follow
    RQ_Parameterization parameterization_;
    RQ_Basis basis_;
    int order_;
    bool wraps_;
};
}  // namespace rq

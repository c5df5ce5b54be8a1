#pragma once

#include <rq/surface/NetDirection.h>

namespace rq
{
/// Where a direction of a net is sampled.
struct NetPlace
{
    int64_t span;  ///< one with a length
    double t;      ///< in [0, 1] of it
};

/// The spans of one direction of a net that have a length.
///
/// A Bezier span is one of a B-spline whose knots are its ends, so that one recurrence serves both.
///
/// Threads  safe to read from any thread
class NetSpans
{
public:
    /// `direction` has passed its check.
    explicit NetSpans(const RQ_NetDirection &direction);

    int order() const { return order_; }
    bool wraps() const { return wraps_; }
    int64_t vertices() const { return vertices_; }
    int64_t spans() const { return int64_t(spans_.size()); }

    /// The parameters where a span begins and ends.
    double begin(int64_t span) const { return knotsOf(span)[order_ - 2]; }
    double end(int64_t span) const { return knotsOf(span)[order_ - 1]; }

    /// The parameter of a place, and the place of a parameter, which is moved into the range that there is.
    double at(const NetPlace &place) const;
    NetPlace find(double parameter) const;

    /// `divisions` even steps a span, and, unless it wraps, the end of the last.
    std::vector<NetPlace> places(int divisions) const;

    /// The vertex that is vertex `i` of those that shape a span.
    int64_t vertex(int64_t span, int64_t i) const { return (spans_[size_t(span)] * step_ + i) % vertices_; }

    /// What these vertices count for, and how fast that changes along the span; `order` of each.
    void weights(const NetPlace &place, double *weights, double *slopes) const;

private:
    const double *knotsOf(int64_t span) const { return knots_.data() + spans_[size_t(span)] * step_ + firstKnot_; }

    int order_;
    int step_;
    bool wraps_;
    int64_t vertices_;
    int64_t firstKnot_;          // of those that shape the first span
    std::vector<double> knots_;  // breakpoints order - 1 times each
    std::vector<int64_t> spans_;
};
}  // namespace rq

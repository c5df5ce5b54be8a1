#pragma once

#include <vector>

#include <rq/surface/detail/SpanShapes.h>

namespace rq
{
/// The weights at even steps of a span: with and without its end.
struct SpanTables
{
    SpanTables() = default;

    /// `weightsAt(t, weights)` computes the weights of `order` vertices.
    template <class WeightsAt> SpanTables(int order, int segments, WeightsAt &&weightsAt)
    {
        open.compute(order, segments + 1, segments, weightsAt);
        joined = open;
        joined.samples = segments;
    }

    SpanWeights joined;  ///< the end belongs to the next span
    SpanWeights open;
};

/// Where the curves of a mesh are sampled: at even steps of each span, and open ones at the end of the last.
///
/// Threads  safe to read from any thread
class CurveSampling
{
public:
    /// `segments` steps for every span.
    CurveSampling(const SpanShapes &shapes, int segments);

    /// The same with tables made before; all curves have their order.
    CurveSampling(const SpanShapes &shapes, const SpanTables &tables, int segments);

    /// `segments[spanOffsets.begin(curve) + span]` steps for each.
    CurveSampling(const SpanShapes &shapes, const RQ_CountArray &spanOffsets, std::vector<int> segments);

    const SpanShapes &shapes() const { return shapes_; }

    /// The samples of each curve.
    const RQ_CountArray &points() const { return points_; }

    /// Weights that many spans share.
    const std::vector<SpanWeights> &tables() const { return tables_; }

    /// The orders and steps whose weights are made once for all spans; those of more steps are not worth keeping.
    static constexpr int kSharedSteps = 256;

    /// Call `visit(span, spans, weights, table)` for runs of consecutive spans of a curve that have the same weights, in
    /// order: `table` is the number of the weights among the shared ones, or -1 for weights that are in `scratch` until the
    /// next.
    template <class Visit> void visitSpans(int64_t curve, SpanWeights &scratch, Visit &&visit) const
    {
        const int64_t last = shapes_.lastSpan(curve);
        if (last < 0)
            return;
        const int64_t joined = last + shapes_.wraps();  // spans whose end belongs to the next
        if (perSpan_.empty() && !tables_.empty())
        {
            const int table = tableOf(curve, segments_, false);
            if (joined > 0)
                visit(int64_t(0), joined, tables_[size_t(table)], table);
            if (joined == last)
                visit(last, int64_t(1), tables_[size_t(table) + 1], table + 1);
            return;
        }
        for (int64_t span = 0; span <= last; ++span)
        {
            if (shapes_.isEmpty(curve, span))
                continue;
            const bool ends = span == joined;
            const int steps = segments(curve, span);
            if (const int table = tableOf(curve, steps, ends); table >= 0)
                visit(span, int64_t(1), tables_[size_t(table)], table);
            else
            {
                scratch.compute(shapes_.order(curve), steps + ends, steps,
                                [&](double t, double *weights) { shapes_.weights(curve, span, t, weights); });
                visit(span, int64_t(1), scratch, -1);
            }
        }
    }

    /// For every sample the vertex that has the greatest weight there.
    RQ_DataArrayHandle nearestVertices() const;

private:
    int segments(int64_t curve, int64_t span) const
    {
        return perSpan_.empty() ? segments_ : perSpan_[size_t(spanOffsets_.begin(curve) + span)];
    }
    int tableOf(int64_t curve, int steps, bool ends) const
    {
        if (tables_.empty())
            return -1;
        const std::vector<int> &bySteps = tableOf_[size_t(shapes_.order(curve))];
        const int first = size_t(steps) < bySteps.size() ? bySteps[size_t(steps)] : -1;
        return first < 0 ? -1 : first + ends;
    }
    void addTables(int order, int steps);
    void addTables(int order, int steps, const SpanTables &tables);
    void countPoints();

    SpanShapes shapes_;
    int segments_ = 1;
    Counts spanOffsets_;
    std::vector<int> perSpan_;
    std::vector<SpanWeights> tables_;
    std::vector<std::vector<int>> tableOf_;  // by order and steps: the first of two tables, -1 for none
    RQ_CountArray points_;
};
}  // namespace rq

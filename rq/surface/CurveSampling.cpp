#include <rq/surface/detail/CurveSampling.h>

#include <algorithm>
#include <limits>

#include <host/bas/Parallel.h>
#include <rq/data/DANumeric.h>

namespace
{
// A span costs some 5 ns to count, a sample 1 ns to look at.
constexpr int64_t kCurvesPerTask = 1024;
constexpr int64_t kPointsPerTask = 16384;
}  // namespace

rq::CurveSampling::CurveSampling(const SpanShapes &shapes, int segments) : shapes_(shapes), segments_(segments)
{
    if (shapes_.alike())
        for (int64_t curve = 0; curve < (shapes_.uniform() ? std::min<int64_t>(1, shapes_.curves()) : shapes_.curves());
             ++curve)
            addTables(shapes_.order(curve), segments);
    countPoints();
}

rq::CurveSampling::CurveSampling(const SpanShapes &shapes, const SpanTables &tables, int segments)
    : shapes_(shapes), segments_(segments)
{
    addTables(tables.open.order, segments, tables);
    countPoints();
}

rq::CurveSampling::CurveSampling(const SpanShapes &shapes, const RQ_CountArray &spanOffsets, std::vector<int> segments)
    : shapes_(shapes), spanOffsets_(spanOffsets), perSpan_(std::move(segments))
{
    if (shapes_.alike())
        for (int64_t curve = 0; curve < shapes_.curves(); ++curve)
            for (int64_t span = spanOffsets_.begin(curve); span < spanOffsets_.end(curve); ++span)
                if (perSpan_[size_t(span)] <= kSharedSteps)
                    addTables(shapes_.order(curve), perSpan_[size_t(span)]);
    countPoints();
}

void rq::CurveSampling::addTables(int order, int steps)
{
    if (size_t(order) < tableOf_.size() && size_t(steps) < tableOf_[size_t(order)].size() &&
        tableOf_[size_t(order)][size_t(steps)] >= 0)
        return;
    const auto weightsAt = [&](double t, double *weights) { basisWeights(shapes_.basis(), order, t, weights); };
    addTables(order, steps, SpanTables(order, steps, weightsAt));
}

void rq::CurveSampling::addTables(int order, int steps, const SpanTables &tables)
{
    tableOf_.resize(std::max(tableOf_.size(), size_t(order) + 1));
    std::vector<int> &bySteps = tableOf_[size_t(order)];
    bySteps.resize(std::max(bySteps.size(), size_t(steps) + 1), -1);
    bySteps[size_t(steps)] = int(tables_.size());
    tables_.push_back(tables.joined);
    tables_.push_back(tables.open);
}

void rq::CurveSampling::countPoints()
{
    const auto pointsOf = [this](int64_t curve) {
        const int64_t last = shapes_.lastSpan(curve);
        int64_t points = last >= 0 && !shapes_.wraps();
        if (shapes_.alike() && perSpan_.empty())
            return points + (last + 1) * segments_;
        for (int64_t span = 0; span <= last; ++span)
            points += shapes_.isEmpty(curve, span) ? 0 : segments(curve, span);
        return points;
    };
    const int64_t curves = shapes_.curves();
    if (curves > 0 && shapes_.uniform() && shapes_.alike() && perSpan_.empty())
        return points_.init(curves, pointsOf(0));
    const BAS_IntrusivePtr<RQ_DANumeric<int64_t>> counts(new RQ_DANumeric<int64_t>(curves));
    host::parallelFor(curves, kCurvesPerTask, [&](int64_t curve) { counts->data()[curve] = pointsOf(curve); });
    points_.init(counts);
}

RQ_DataArrayHandle rq::CurveSampling::nearestVertices() const
{
    const auto fill = [this]<class Index>(Index) -> RQ_DataArrayHandle {
        const Counts points(points_);
        const BAS_IntrusivePtr<RQ_DANumeric<Index>> nearest(new RQ_DANumeric<Index>(points.sum()));
        const auto fillCurves = [&](int64_t begin, int64_t end) {
            SpanWeights scratch;
            Index *out = nearest->data() + points.begin(begin);
            for (int64_t curve = begin; curve < end; ++curve)
                visitSpans(curve, scratch, [&](int64_t first, int64_t spans, const SpanWeights &weights, int) {
                    for (int64_t span = first; span < first + spans; ++span)
                        for (int sample = 0; sample < weights.samples; ++sample)
                            *out++ = Index(shapes_.vertex(curve, span, weights.nearest(sample)));
                });
        };
        host::parallelForWeighted(
            shapes_.curves(), kPointsPerTask, [&](int64_t curve) { return points.end(curve); }, fillCurves);
        return nearest;
    };
    return shapes_.vertices() > std::numeric_limits<int32_t>::max() ? fill(int64_t()) : fill(int32_t());
}

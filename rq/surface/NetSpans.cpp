#include <rq/surface/detail/NetSpans.h>

#include <algorithm>
#include <numeric>

#include <rq/surface/detail/SpanShapes.h>

rq::NetSpans::NetSpans(const RQ_NetDirection &direction)
    : order_(direction.order), step_(RQbasisStep(direction.basis, direction.order)), wraps_(direction.wraps),
      vertices_(direction.vertices), firstKnot_(direction.basis == RQ_BASIS_BEZIER ? 0 : 1), knots_(direction.knots)
{
    if (knots_.empty())
    {
        knots_.resize(size_t(direction.knotCount()));
        std::iota(knots_.begin(), knots_.end(), 0.0);
    }
    if (direction.basis == RQ_BASIS_BEZIER)
    {
        std::vector<double> repeated;
        for (const double breakpoint : knots_)
            repeated.insert(repeated.end(), size_t(order_ - 1), breakpoint);
        knots_ = std::move(repeated);
    }
    const int64_t count = spanCount(direction.basis, order_, wraps_, vertices_);
    for (int64_t span = 0; span < count; ++span)
    {
        const double *knots = knots_.data() + span * step_ + firstKnot_;
        if (knots[order_ - 2] < knots[order_ - 1])
            spans_.push_back(span);
    }
}

double rq::NetSpans::at(const NetPlace &place) const
{
    const double first = begin(place.span), last = end(place.span);
    return place.t == 1.0 ? last : first + place.t * (last - first);
}

rq::NetPlace rq::NetSpans::find(double parameter) const
{
    int64_t low = 0, high = spans() - 1;
    while (low < high)
    {
        const int64_t middle = low + (high - low) / 2;
        if (parameter < end(middle))
            high = middle;
        else
            low = middle + 1;
    }
    const double first = begin(low), last = end(low);
    return {low, std::clamp((parameter - first) / (last - first), 0.0, 1.0)};
}

std::vector<rq::NetPlace> rq::NetSpans::places(int divisions) const
{
    std::vector<NetPlace> all;
    all.reserve(size_t(spans() * divisions + 1));
    for (int64_t span = 0; span < spans(); ++span)
        for (int i = 0; i < divisions; ++i)
            all.push_back({span, double(i) / double(divisions)});
    if (!wraps_ && spans() > 0)
        all.push_back({spans() - 1, 1.0});
    return all;
}

void rq::NetSpans::weights(const NetPlace &place, double *weights, double *slopes) const
{
    knotWeights(knotsOf(place.span), order_, place.t, weights);
    knotSlopes(knotsOf(place.span), order_, place.t, slopes);
    const double length = end(place.span) - begin(place.span);
    std::transform(slopes, slopes + order_, slopes, [=](double slope) { return slope * length; });
}

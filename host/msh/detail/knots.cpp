#include <host/msh/detail/knots.h>

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

namespace
{
constexpr int32_t kHighestOrder = 31;

int64_t spansOf(const host::KnotDirection &d)
{
    const int64_t degree = d.order - 1;
    if (d.isBezier)
        return d.wraps ? d.vertices / degree : (d.vertices - 1) / degree;
    return d.wraps ? d.vertices : d.vertices - degree;
}

int64_t knotCount(const host::KnotDirection &d)
{
    return d.isBezier ? spansOf(d) + 1 : d.wraps ? d.vertices + 2 * d.order - 1 : d.vertices + d.order;
}
}  // namespace

bool host::checkKnots(const KnotDirection &d, const std::vector<double> &knots, std::string &why)
{
    if (d.order < 2 || d.order > kHighestOrder)
        why = fmt::format("order {} is out of range [2, {}]", d.order, kHighestOrder);
    else if (d.vertices < (d.order - d.wraps) || (d.isBezier && (d.vertices - !d.wraps) % (d.order - 1) != 0))
        why = fmt::format("{} control vertices make no {}{} curve of order {}", d.vertices, d.wraps ? "closed " : "",
                          d.isBezier ? "Bezier" : "NURBS", d.order);
    else if (!knots.empty() && int64_t(knots.size()) != knotCount(d))
        why = fmt::format("{} control vertices of order {} need {} knots, not {}", d.vertices, d.order, knotCount(d),
                          knots.size());
    else if (!std::all_of(knots.begin(), knots.end(), [](double knot) { return std::isfinite(knot); }))
        why = "a knot is not finite";
    else if (!std::is_sorted(knots.begin(), knots.end()))
        why = "the knots fall";
    else
        return true;
    return false;
}

std::vector<double> host::evenKnots(const KnotDirection &d)
{
    const double spans = double(spansOf(d));
    const int64_t degree = d.order - 1;
    std::vector<double> knots(size_t(knotCount(d)));
    for (size_t i = 0; i < knots.size(); ++i)
    {
        const double at = d.isBezier ? double(i) : double(int64_t(i) - degree);
        knots[i] = (d.wraps ? at : std::clamp(at, 0.0, spans)) / spans;
    }
    return knots;
}

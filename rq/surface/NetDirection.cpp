#include <rq/surface/NetDirection.h>

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include <host/bas/JSONWriter.h>
#include <rq/surface/CurveEval.h>
#include <rq/surface/detail/SpanShapes.h>

bool RQ_NetDirection::check(std::string &why) const
{
    int smallest, greatest;
    RQ_CurveEval::orderRange(basis, smallest, greatest);
    if (basis != RQ_BASIS_LINEAR && basis != RQ_BASIS_BEZIER && basis != RQ_BASIS_BSPLINE)
        why = fmt::format("nets have no {} directions", RQbasis(basis));
    else if (order < smallest || order > greatest)
        why = fmt::format("order {} is out of range [{}, {}]", order, smallest, greatest);
    else if (vertices < order - wraps || (vertices - !wraps) % RQbasisStep(basis, order) != 0)
        why = fmt::format("{} vertices make no {}{} direction of order {}", vertices, wraps ? "closed " : "", RQbasis(basis),
                          order);
    else if (!knots.empty() && int64_t(knots.size()) != knotCount())
        why = fmt::format("{} vertices of order {} need {} knots, not {}", vertices, order, knotCount(), knots.size());
    else if (!std::all_of(knots.begin(), knots.end(), [](double knot) { return std::isfinite(knot); }))
        why = "a knot is not finite";
    else if (!std::is_sorted(knots.begin(), knots.end()))
        why = "the knots fall";
    else
        return true;
    return false;
}

int64_t RQ_NetDirection::knotCount() const
{
    if (basis == RQ_BASIS_BEZIER)
        return rq::spanCount(basis, order, wraps, vertices) + 1;
    return wraps ? vertices + 2 * order - 1 : vertices + order;
}

bool RQ_NetDirection::save(BAS_JSONWriter &writer) const
{
    return writer.beginMap() && writer.writeKeyString("basis", RQbasis(basis)) && writer.writeKeyInt("order", order) &&
           writer.key("wraps") && writer.writeBool(wraps) && writer.writeKeyInt("vertices", vertices) &&
           writer.key("knots") && writer.uniformArray(knots.data(), int64_t(knots.size())) && writer.endMap();
}

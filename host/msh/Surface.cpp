#include <host/msh/Surface.h>

#include <fmt/format.h>

#include <host/msh/detail/knots.h>

bool MSH_TrimLoops::check(std::string &why) const
{
    size_t curves = 0;
    for (const int32_t count : loopCurves)
    {
        if (count < 1 || size_t(count) > orders.size() - curves)
            return why = fmt::format("a trim loop has {} curves, but {} are left", count, orders.size() - curves), false;
        curves += size_t(count);
    }
    if (orders.size() != curves || counts.size() != curves)
        return why =
                   fmt::format("trim loops of {} curves have {} orders and {} counts", curves, orders.size(), counts.size()),
               false;
    size_t knot = 0, point = 0;
    for (size_t c = 0; c < curves; ++c)
    {
        const int64_t needed = int64_t(orders[c]) + counts[c];
        if (orders[c] < 2 || counts[c] < orders[c] || needed > int64_t(knots.size() - knot))
            return why = fmt::format("trim curve {} cannot be of order {} with {} points", c, orders[c], counts[c]), false;
        const auto begin = knots.begin() + int64_t(knot);
        if (!host::checkKnots({false, false, orders[c], counts[c]}, std::vector<double>(begin, begin + needed), why))
            return false;
        knot += size_t(needed);
        point += size_t(counts[c]);
    }
    if (knots.size() == knot && points.size() == 3 * point)
        return true;
    why =
        fmt::format("trim curves of {} knots and {} points have {} and {} values", knot, point, knots.size(), points.size());
    return false;
}

bool MSH_SurfaceData::check(const MSH_PayloadUse &use, std::string &why) const
{
    const bool isBezier = use.type == ELM_PRIMITIVE_BEZIER_SURFACE;
    if (rows < 1 || columns < 1 || int64_t(rows) * columns != use.vertices)
    {
        why = fmt::format("{} vertices do not fill a surface of {} rows and {} columns", use.vertices, rows, columns);
        return false;
    }
    return host::checkKnots({isBezier, wrapsU, orderU, columns}, knotsU, why) &&
           host::checkKnots({isBezier, wrapsV, orderV, rows}, knotsV, why) && trims.check(why);
}

std::vector<double> MSH_Surface::knotsU() const
{
    return data().knotsU.empty() ? host::evenKnots({isBezier(), wrapsU(), orderU(), columns()}) : data().knotsU;
}

std::vector<double> MSH_Surface::knotsV() const
{
    return data().knotsV.empty() ? host::evenKnots({isBezier(), wrapsV(), orderV(), rows()}) : data().knotsV;
}

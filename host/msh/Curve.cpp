#include <host/msh/Curve.h>

#include <host/msh/detail/knots.h>

bool MSH_CurveData::check(const MSH_PayloadUse &use, std::string &why) const
{
    return host::checkKnots({use.type == ELM_PRIMITIVE_BEZIER_CURVE, wraps, order, use.vertices}, knots, why);
}

std::vector<double> MSH_Curve::knots() const
{
    return data().knots.empty() ? host::evenKnots({isBezier(), wraps(), order(), vertexCount()}) : data().knots;
}

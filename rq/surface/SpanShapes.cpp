#include <rq/surface/detail/SpanShapes.h>

#include <cmath>

int64_t rq::spanCount(RQ_Basis basis, int order, bool periodic, int64_t vertices)
{
    const int step = RQbasisStep(basis, order);
    if (order < 2 || vertices < order - periodic)
        return 0;
    return periodic ? vertices / step : (vertices - order) / step + 1;
}

rq::SpanShapes::SpanShapes(const RQ_PrimCurveMesh &mesh)
    : counts_(mesh.getCurveCountArray()), orders_(mesh.isUniformOrder() ? RQ_DataArrayHandle() : mesh.varyingOrders()),
      parameterization_(mesh.getBreakpointsParameterization()), basis_(mesh.getBasis()), order_(mesh.uniformOrder()),
      wraps_(mesh.getWrap())
{
    if (basis_ == RQ_BASIS_BSPLINE && mesh.knots())
    {
        knots_ = Values<double>(mesh.knots());
        if (!mesh.isUniformOrder())
            knotCounts_ = Counts(mesh.getKnotCountArray());
    }
    if (basis_ == RQ_BASIS_CATMULLROM && mesh.getUseBreakpoints() && parameterization_ != RQ_PARAMETERIZATION_UNIFORM)
        if (const Positions positions(mesh.getVertex() ? mesh.getVertex()->get("P", 0) : nullptr);
            positions.entries() >= counts_.sum())
            spread_ = positions;
}

void rq::SpanShapes::weights(int64_t curve, int64_t span, double t, double *weights) const
{
    if (knots_.entries() > 0)
        return knotWeights(knotsOf(curve, span), order(curve), t, weights);
    if (!spread_.isValid())
        return basisWeights(basis_, order(curve), t, weights);
    double steps[3];
    for (int i = 0; i < 3; ++i)
    {
        const double chord = (spread_[vertex(curve, span, i + 1)] - spread_[vertex(curve, span, i)]).length();
        steps[i] = parameterization_ == RQ_PARAMETERIZATION_CENTRIPETAL ? std::sqrt(chord) : chord;
    }
    // Vertices that meet leave no step; then its neighbour's serves.
    if (!(steps[1] > 0.0))
        steps[1] = 1.0;
    for (double &step : steps)
        if (!(step > 0.0))
            step = steps[1];
    spreadWeights(steps, t, weights);
}

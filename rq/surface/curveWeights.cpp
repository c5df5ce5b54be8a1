#include <rq/surface/detail/curveWeights.h>

#include <algorithm>

namespace
{
/// Non-zero B-spline weights at distances `left(j)` behind and `right(j)` before the j-th knots around.  Dividing products
/// instead of multiplying quotients keeps the ends of clamped curves exact.
template <class Left, class Right> void bsplineWeights(int order, Left &&left, Right &&right, double *weights)
{
    weights[0] = 1.0;
    for (int j = 1; j < order; ++j)
    {
        double carried = 0.0;
        for (int r = 0; r < j; ++r)
        {
            const double before = right(r + 1), behind = left(j - r), weight = weights[r];
            weights[r] = carried + before * weight / (before + behind);
            carried = behind * weight / (before + behind);
        }
        weights[j] = carried;
    }
}

void bernsteinWeights(int order, double t, double *weights)
{
    weights[0] = 1.0;
    for (int j = 1; j < order; ++j)
    {
        double carried = 0.0;
        for (int r = 0; r < j; ++r)
        {
            const double weight = weights[r];
            weights[r] = carried + (1.0 - t) * weight;
            carried = t * weight;
        }
        weights[j] = carried;
    }
}
}  // namespace

void rq::basisWeights(RQ_Basis basis, int order, double t, double *weights)
{
    const double t2 = t * t, t3 = t2 * t;
    switch (basis)
    {
    case RQ_BASIS_BEZIER:
        return bernsteinWeights(order, t, weights);
    case RQ_BASIS_BSPLINE:
        return bsplineWeights(
            order, [t](int j) { return t + (j - 1); }, [t](int j) { return j - t; }, weights);
    case RQ_BASIS_CATMULLROM:
        weights[0] = 0.5 * (-t3 + 2.0 * t2 - t);
        weights[1] = 0.5 * (3.0 * t3 - 5.0 * t2 + 2.0);
        weights[2] = 0.5 * (-3.0 * t3 + 4.0 * t2 + t);
        weights[3] = 0.5 * (t3 - t2);
        return;
    case RQ_BASIS_HERMITE:
        weights[0] = 2.0 * t3 - 3.0 * t2 + 1.0;
        weights[1] = t3 - 2.0 * t2 + t;
        weights[2] = -2.0 * t3 + 3.0 * t2;
        weights[3] = t3 - t2;
        return;
    case RQ_BASIS_POWER:
        weights[0] = 1.0;
        for (int i = 1; i < order; ++i)
            weights[i] = weights[i - 1] * t;
        return;
    default:
        weights[0] = 1.0 - t;
        weights[1] = t;
    }
}

void rq::knotWeights(const double *knots, int order, double t, double *weights)
{
    const double begin = knots[order - 2], end = knots[order - 1];
    const double u = t == 1.0 ? end : begin + t * (end - begin);
    bsplineWeights(
        order, [&](int j) { return u - knots[order - 1 - j]; }, [&](int j) { return knots[order - 2 + j] - u; }, weights);
}

void rq::knotSlopes(const double *knots, int order, double t, double *slopes)
{
    // A weight is made of two of the order below, each over the knots between which it lives.
    const int degree = order - 1;
    slopes[degree] = 0.0;
    if (degree == 1)
        slopes[0] = 1.0;
    else
        knotWeights(knots + 1, degree, t, slopes);
    double before = 0.0;
    for (int i = 0; i <= degree; ++i)
    {
        const double behind = i < degree ? degree * slopes[i] / (knots[i + degree] - knots[i]) : 0.0;
        slopes[i] = before - behind;
        before = behind;
    }
}

void rq::spreadWeights(const double *steps, double t, double *weights)
{
    // Breakpoints relative to the second; u runs from there to the third.
    const double at[4] = {-steps[0], 0.0, steps[1], steps[1] + steps[2]};
    const double u = t * steps[1];
    double pyramid[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
    const auto blend = [&](int row, int from, int to) {
        const double share = (u - at[from]) / (at[to] - at[from]);
        for (int i = 0; i < 4; ++i)
            pyramid[row][i] = (1.0 - share) * pyramid[row][i] + share * pyramid[row + 1][i];
    };
    for (int i = 0; i < 3; ++i)
        blend(i, i, i + 1);
    blend(0, 0, 2);
    blend(1, 1, 3);
    blend(0, 1, 2);
    std::copy_n(pyramid[0], 4, weights);
}

int rq::heaviest(const double *weights, int count)
{
    // Weights that are equal but for rounding count as equal.
    constexpr double kRounding = 1e-12;
    int best = 0;
    for (int i = 1; i < count; ++i)
        if (weights[i] > weights[best] + kRounding)
            best = i;
    return best;
}

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <rq/surface/Basis.h>

namespace rq
{
/// The largest order of any basis.
constexpr int kLargestOrder = 128;

/// What each of the `order` vertices of a span counts for at parameter `t` in [0, 1] of it.  At both ends the weights of
/// curves through vertices are 0 and 1 exactly.
void basisWeights(RQ_Basis basis, int order, double t, double *weights);

/// The same of a B-spline whose span lies between `knots[order - 2]` and `knots[order - 1]` (Piegl, Tiller, The NURBS Book,
/// 1997, algorithm A2.2).
void knotWeights(const double *knots, int order, double t, double *weights);

/// How fast those weights change with the parameter (the same book, algorithm A2.3, for the first derivative).
void knotSlopes(const double *knots, int order, double t, double *slopes);

/// The weights of a Catmull-Rom span whose four vertices lie at breakpoints `steps` apart (Barry, Goldman, A recursive
/// evaluation algorithm for a class of Catmull-Rom splines, 1988).
void spreadWeights(const double *steps, double t, double *weights);

/// The place of the greatest of some weights, of the first of equal ones.
int heaviest(const double *weights, int count);

/// The weights of one span at several parameters.
struct SpanWeights
{
    /// Make `samples` places; `weightsAt(t, weights)` computes those at 0, 1 / segments, 2 / segments, ...
    template <class WeightsAt> void compute(int vertices, int places, int segments, WeightsAt &&weightsAt)
    {
        order = vertices;
        samples = places;
        values.resize(size_t(order) * size_t(samples));
        for (int sample = 0; sample < samples; ++sample)
            weightsAt(double(sample) / double(segments), values.data() + int64_t(sample) * order);
    }

    const double *at(int sample) const { return values.data() + int64_t(sample) * order; }

    /// The vertex of the greatest weight, the first of equal ones.
    int nearest(int sample) const { return heaviest(at(sample), order); }

    int order = 0;
    int samples = 0;
    std::vector<double> values;  // of each sample those of all vertices
};
}  // namespace rq

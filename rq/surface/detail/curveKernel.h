#pragma once

#include <algorithm>
#include <vector>

#include <host/bas/clones.h>
#include <rq/surface/detail/curveWeights.h>

// Sums of weighted vertices for a whole span, as plain loops over packed values.  Samples go in groups: the components of a
// group lie side by side, and beside each stands its sample's weight, so that a group is a few products of whole registers.

namespace rq
{
// Whole registers, wide ones too, for any number of components.
constexpr int kGroup = 8;

inline int groups(int samples) { return (samples + kGroup - 1) / kGroup; }

/// The weights of a span as the sums want them: for each group and each vertex the weight of every value of the group.
/// Samples that fill up the last group have weight 0.
template <class T> class GroupedWeights
{
public:
    GroupedWeights() = default;
    GroupedWeights(const SpanWeights &weights, int components) { build(weights, components); }

    void build(const SpanWeights &weights, int components)
    {
        order_ = weights.order;
        samples_ = weights.samples;
        values_.assign(size_t(groups(samples_)) * size_t(order_) * size_t(kGroup) * size_t(components), T(0));
        for (int sample = 0; sample < samples_; ++sample)
            for (int i = 0; i < order_; ++i)
            {
                T *row = values_.data() + (int64_t(sample / kGroup) * order_ + i) * kGroup * components;
                std::fill_n(row + sample % kGroup * components, components, T(weights.at(sample)[i]));
            }
    }

    int order() const { return order_; }
    int samples() const { return samples_; }
    const T *data() const { return values_.data(); }

private:
    int order_ = 0;
    int samples_ = 0;
    std::vector<T> values_;
};

/// Consecutive spans of the same weights: where their vertices lie in a row, and how many values the next begins further on.
template <class T> struct SpanRun
{
    const T *vertices;
    int64_t spans;
    int64_t step;
};

/// Sums for cubic spans of `kComponents` components.  `out` has room for whole groups behind the last span; a span's sums
/// overwrite what fills up the last group of the span before.
template <class T, int kComponents>
HOST_CLONES void sumCubics(const T *__restrict weights, int samples, SpanRun<T> run, T *__restrict out)
{
    // Every vertex is laid out as a group once for all spans that it shapes.
    constexpr int kValues = kGroup * kComponents, kMostVertices = 32;
    T laid[kMostVertices][kValues];
    const int64_t step = run.step / kComponents, atOnce = (kMostVertices - 4) / step + 1;
    for (int64_t begin = 0; begin < run.spans; begin += atOnce)
    {
        const int64_t spans = std::min(atOnce, run.spans - begin);
        const T *from = run.vertices + begin * run.step;
        for (int64_t vertex = 0; vertex < (spans - 1) * step + 4; ++vertex, from += kComponents)
            for (int i = 0; i < kValues; ++i)
                laid[vertex][i] = from[i % kComponents];
        for (int64_t span = 0; span < spans; ++span, out += samples * kComponents)
        {
            const T *__restrict a = laid[span * step], *__restrict b = a + kValues, *__restrict c = b + kValues,
                                *__restrict d = c + kValues, *__restrict w = weights;
            T *__restrict to = out;
            for (int sample = 0; sample < samples; sample += kGroup, w += 4 * kValues, to += kValues)
                for (int i = 0; i < kValues; ++i)
                    to[i] = (w[i] * a[i] + w[kValues + i] * b[i]) + (w[2 * kValues + i] * c[i] + w[3 * kValues + i] * d[i]);
        }
    }
}

/// The same for any order and number of components.
template <class T>
HOST_CLONES void sumSpans(const T *__restrict weights, int order, int samples, int components, SpanRun<T> run,
                          T *__restrict out)
{
    const int64_t values = int64_t(kGroup) * components;
    for (int64_t span = 0; span < run.spans; ++span, run.vertices += run.step, out += samples * components)
        for (int sample = 0; sample < samples; ++sample)
        {
            const T *row = weights + sample / kGroup * order * values + sample % kGroup * components;
            T *to = out + sample * components;
            for (int c = 0; c < components; ++c)
                to[c] = row[c] * run.vertices[c];
            for (int i = 1; i < order; ++i)
                for (int c = 0; c < components; ++c)
                    to[c] += row[i * values + c] * run.vertices[int64_t(i) * components + c];
        }
}

template <class T> void sumSpans(const GroupedWeights<T> &weights, int components, const SpanRun<T> &run, T *out)
{
    if (weights.order() != 4)
        return sumSpans(weights.data(), weights.order(), weights.samples(), components, run, out);
    switch (components)
    {
    case 1:
        return sumCubics<T, 1>(weights.data(), weights.samples(), run, out);
    case 2:
        return sumCubics<T, 2>(weights.data(), weights.samples(), run, out);
    case 3:
        return sumCubics<T, 3>(weights.data(), weights.samples(), run, out);
    case 4:
        return sumCubics<T, 4>(weights.data(), weights.samples(), run, out);
    default:
        return sumSpans(weights.data(), 4, weights.samples(), components, run, out);
    }
}
}  // namespace rq

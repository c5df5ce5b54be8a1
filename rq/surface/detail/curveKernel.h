#pragma once

#include <vector>

#include <rq/data/detail/clones.h>
#include <rq/surface/detail/curveWeights.h>

// Sums of weighted vertices for a whole span, as plain loops over packed values.  Samples go in groups: the components of a
// group lie side by side, and beside each stands its sample's weight, so that a group is a few products of whole registers.

namespace rq
{
constexpr int kGroup = 4;

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

/// Sums for cubic spans of `kComponents` components: `vertices` are the four in a row, `out` has room for whole groups.
template <class T, int kComponents>
RQ_CLONES void sumCubic(const T *__restrict weights, int groupCount, const T *__restrict vertices, T *__restrict out)
{
    constexpr int kValues = kGroup * kComponents;
    T a[kValues], b[kValues], c[kValues], d[kValues];
    for (int i = 0; i < kValues; ++i)
    {
        a[i] = vertices[i % kComponents];
        b[i] = vertices[kComponents + i % kComponents];
        c[i] = vertices[2 * kComponents + i % kComponents];
        d[i] = vertices[3 * kComponents + i % kComponents];
    }
    for (int group = 0; group < groupCount; ++group, weights += 4 * kValues, out += kValues)
        for (int i = 0; i < kValues; ++i)
            out[i] = (weights[i] * a[i] + weights[kValues + i] * b[i]) +
                     (weights[2 * kValues + i] * c[i] + weights[3 * kValues + i] * d[i]);
}

/// The same for any order and number of components.
template <class T>
RQ_CLONES void sumSpan(const T *__restrict weights, int order, int components, int groupCount, const T *__restrict vertices,
                       T *__restrict out)
{
    const int values = kGroup * components;
    for (int group = 0; group < groupCount; ++group, weights += int64_t(order) * values, out += values)
        for (int sample = 0; sample < kGroup; ++sample)
        {
            const int first = sample * components;
            for (int c = 0; c < components; ++c)
                out[first + c] = weights[first + c] * vertices[c];
            for (int i = 1; i < order; ++i)
                for (int c = 0; c < components; ++c)
                    out[first + c] += weights[int64_t(i) * values + first + c] * vertices[int64_t(i) * components + c];
        }
}

template <class T> void sumSpan(const GroupedWeights<T> &weights, int components, const T *vertices, T *out)
{
    const int count = groups(weights.samples());
    if (weights.order() != 4)
        return sumSpan(weights.data(), weights.order(), components, count, vertices, out);
    switch (components)
    {
    case 1:
        return sumCubic<T, 1>(weights.data(), count, vertices, out);
    case 2:
        return sumCubic<T, 2>(weights.data(), count, vertices, out);
    case 3:
        return sumCubic<T, 3>(weights.data(), count, vertices, out);
    case 4:
        return sumCubic<T, 4>(weights.data(), count, vertices, out);
    default:
        return sumSpan(weights.data(), 4, components, count, vertices, out);
    }
}
}  // namespace rq

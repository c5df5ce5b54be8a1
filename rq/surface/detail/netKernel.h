#pragma once

#include <algorithm>
#include <vector>

#include <host/bas/Parallel.h>
#include <host/bas/clones.h>
#include <rq/data/Values.h>
#include <rq/surface/detail/NetSampling.h>
#include <rq/surface/detail/curveWeights.h>

// A tensor product is summed along u first, for every row of the net, and then along v: the second sums, which are by far
// the most, run over whole rows of packed values.

namespace rq
{
/// Control vertices as rows of values: those of a rational net multiplied by their weights, which stand behind.
template <class T> class NetValues
{
public:
    NetValues(const RQ_DataArray &vertices, const RQ_DataArray *weights)
        : values_(vertices), components_(int(vertices.getTupleSize())), isRational_(weights != nullptr)
    {
        if (!weights)
            return;
        const Values<T> factors(*weights);
        lifted_.reserve(size_t(vertices.entries() * width()));
        for (int64_t i = 0; i < vertices.entries(); ++i)
        {
            for (int c = 0; c < components_; ++c)
                lifted_.push_back(values_(i, c) * factors[i]);
            lifted_.push_back(factors[i]);
        }
    }

    int components() const { return components_; }
    int width() const { return components_ + isRational_; }
    bool isRational() const { return isRational_; }
    const T *operator[](int64_t vertex) const { return (isRational_ ? lifted_.data() : values_.data()) + vertex * width(); }

private:
    Values<T> values_;
    std::vector<T> lifted_;
    int components_;
    bool isRational_;
};

/// Add, or assign, the weighted sum of `kRows` rows.
template <class T, int kRows>
HOST_CLONES void sumFewRows(const T *const *rows, const T *weights, int64_t values, bool adds, T *__restrict out)
{
    const T *from[kRows];
    T factors[kRows];
    for (int r = 0; r < kRows; ++r)
    {
        from[r] = rows[r];
        factors[r] = weights[r];
    }
    if (adds)
        for (int64_t i = 0; i < values; ++i)
            for (int r = 0; r < kRows; ++r)
                out[i] += factors[r] * from[r][i];
    else
        for (int64_t i = 0; i < values; ++i)
        {
            T sum = factors[0] * from[0][i];
            for (int r = 1; r < kRows; ++r)
                sum += factors[r] * from[r][i];
            out[i] = sum;
        }
}

/// The weighted sum of some rows of packed values.
template <class T> void sumRows(const T *const *rows, const T *weights, int count, int64_t values, T *out)
{
    for (int done = 0; done < count;)
    {
        const int few = std::min(4, count - done);
        const auto sum = few == 4   ? sumFewRows<T, 4>
                         : few == 3 ? sumFewRows<T, 3>
                         : few == 2 ? sumFewRows<T, 2>
                                    : sumFewRows<T, 1>;
        sum(rows + done, weights + done, values, done > 0, out);
        done += few;
    }
}

/// The rows of a net summed along u at every line; `factorsOf(line)` gives what the line's vertices count for.
template <class T> class NetRows
{
public:
    template <class FactorsOf>
    NetRows(const NetSampling &sampling, const NetValues<T> &net, FactorsOf &&factorsOf)
        : values_(sampling.u.count() * net.width()), sums_(size_t(sampling.vertices / sampling.columns * values_), T(0))
    {
        // A product costs some 0.5 ns.
        constexpr int64_t kProductsPerTask = 65536;
        const NetLines &lines = sampling.u;
        const int width = net.width();
        host::parallelFor(sampling.vertices / sampling.columns,
                          std::max<int64_t>(1, kProductsPerTask / std::max<int64_t>(1, values_ * lines.order())),
                          [&](int64_t row) {
                              T *out = sums_.data() + row * values_;
                              for (int64_t line = 0; line < lines.count(); ++line, out += width)
                                  for (int k = 0; k < lines.order(); ++k)
                                  {
                                      const T factor = T(factorsOf(line)[k]);
                                      const T *from = net[row * sampling.columns + lines.vertices(line)[k]];
                                      for (int c = 0; c < width; ++c)
                                          out[c] += factor * from[c];
                                  }
                          });
    }

    /// The values of a row.
    int64_t values() const { return values_; }

    /// Sum along v what shapes a line of v.
    void sum(const NetLines &lines, int64_t line, const double *factors, T *out) const
    {
        const T *rows[kLargestOrder];
        T weights[kLargestOrder];
        for (int k = 0; k < lines.order(); ++k)
        {
            rows[k] = sums_.data() + lines.vertices(line)[k] * values_;
            weights[k] = T(factors[k]);
        }
        sumRows(rows, weights, lines.order(), values_, out);
    }

private:
    int64_t values_;
    std::vector<T> sums_;
};

/// The weighted sum of the vertices of a place; `out` has room for a vertex.
template <class T>
void sumPlace(const NetValues<T> &net, const std::vector<int64_t> &vertices, const std::vector<double> &factors, T *out)
{
    std::fill_n(out, net.width(), T(0));
    for (size_t k = 0; k < vertices.size(); ++k)
        for (int c = 0; c < net.width(); ++c)
            out[c] += T(factors[k]) * net[vertices[k]][c];
}
}  // namespace rq

#include <host/bas/Parallel.h>
#include <rq/subd/detail/TupleSum.h>
#include <rq/subd/detail/regularPatches.h>

namespace
{
// A face costs some 200 ns.
constexpr int64_t kFacesPerTask = 256;

/// Where four quads meet, Catmull-Clark surfaces are those of uniform cubic B-splines, and a step splits rows and then
/// columns: `n` values become one between each two, and one at each but the first and the last.
template <class Sum> Sum between(const Sum &a, const Sum &b) { return (a + b) * 0.5f; }
template <class Sum> Sum at(const Sum &before, const Sum &value, const Sum &behind)
{
    return (before + behind) * 0.125f + value * 0.75f;
}
constexpr int splitSize(int n) { return 2 * n - 3; }

/// The values around a face, step by step.
template <class T, int N, int kSteps> class Grid
{
public:
    void load(const T *from, int64_t tuple, const int32_t *points)
    {
        for (int i = 0; i < 16; ++i)
            values_[i] = Sum::of(from + points[i] * tuple);
    }

    /// Take all steps, and store what lies on the face.
    void splitTo(const int32_t *made, int64_t tuple, T *to)
    {
        if constexpr (kSteps > 1)
            split<4>();
        if constexpr (kSteps > 2)
            split<splitSize(4)>();
        constexpr int n = kSteps == 1 ? 4 : kSteps == 2 ? splitSize(4) : splitSize(splitSize(4));
        constexpr int side = splitSize(n) - 2;
        splitRows<n>();
        for (int row = 0; row < side; ++row)
            for (int column = 0; column < side; ++column, ++made)
                if (*made >= 0)
                    splitColumn<n>(row + 1, column + 1).store(to + *made * tuple);
    }

private:
    using Sum = rq::TupleSum<T, N>;

    template <int n> void splitRows()
    {
        constexpr int m = splitSize(n);
        for (int row = 0; row < n; ++row)
        {
            const Sum *in = values_ + row * n;
            Sum *out = rows_ + row * m;
            out[0] = between(in[0], in[1]);
            for (int i = 1; i < n - 1; ++i)
            {
                out[2 * i - 1] = at(in[i - 1], in[i], in[i + 1]);
                out[2 * i] = between(in[i], in[i + 1]);
            }
        }
    }

    /// The value in a row and a column of what the rows become when their columns are split.
    template <int n> Sum splitColumn(int row, int column) const
    {
        constexpr int m = splitSize(n);
        const Sum *in = rows_ + row / 2 * m + column;
        return row % 2 == 0 ? between(in[0], in[m]) : at(in[0], in[m], in[2 * m]);
    }

    template <int n> void split()
    {
        constexpr int m = splitSize(n);
        splitRows<n>();
        for (int row = 0; row < m; ++row)
            for (int column = 0; column < m; ++column)
                values_[row * m + column] = splitColumn<n>(row, column);
    }

    Sum values_[49], rows_[77];
};

template <class T, int N, int kSteps>
void runFaces(int64_t count, const int32_t *controls, const int32_t *made, const T *from, int64_t tuple, T *to)
{
    constexpr int64_t kMade = ((1 << kSteps) + 1) * ((1 << kSteps) + 1);
    host::parallelForRange(count, kFacesPerTask, [=](int64_t begin, int64_t end) {
        Grid<T, N, kSteps> grid;
        for (int64_t face = begin; face < end; ++face)
        {
            grid.load(from, tuple, controls + 16 * face);
            grid.splitTo(made + kMade * face, tuple, to);
        }
    });
}
}  // namespace

template <class T, int N> void rq::RegularPatches::runComponents(const T *from, int64_t tuple, T *to) const
{
    constexpr decltype(&runFaces<T, N, 1>) kRuns[kMostSteps] = {runFaces<T, N, 1>, runFaces<T, N, 2>, runFaces<T, N, 3>};
    kRuns[steps_ - 1](int64_t(faces_.size()), controls_.data(), made_.data(), from, tuple, to);
}

template <class T> void rq::RegularPatches::run(const T *from, int64_t tuple, T *to) const
{
    if (isEmpty())
        return;
    int64_t first = 0;
    for (; first + 3 <= tuple; first += 3)
        runComponents<T, 3>(from + first, tuple, to + first);
    for (; first < tuple; ++first)
        runComponents<T, 1>(from + first, tuple, to + first);
}

template void rq::RegularPatches::run(const float *, int64_t, float *) const;
template void rq::RegularPatches::run(const double *, int64_t, double *) const;

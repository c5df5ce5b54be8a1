#include <rq/subd/detail/cornerValues.h>

#include <algorithm>

#include <host/bas/Parallel.h>
#include <rq/data/DANumeric.h>
#include <rq/data/Values.h>

namespace
{
// A face costs some 20 ns.
constexpr int64_t kFacesPerTask = 4096;

template <class T> using Numbers = BAS_IntrusivePtr<RQ_DANumeric<T>>;

/// Rows of corners that are blended component by component.
template <class T> struct Blended
{
    const T *from;
    T *to;
    int64_t tuple;

    void copy(int64_t corner, int64_t out) const { std::copy_n(from + corner * tuple, tuple, to + out * tuple); }
    void middle(int64_t a, int64_t b, int64_t out) const
    {
        for (int64_t i = 0; i < tuple; ++i)
            to[out * tuple + i] = (from[a * tuple + i] + from[b * tuple + i]) * T(0.5);
    }
    void centre(int64_t first, int64_t count, int64_t, int64_t out) const
    {
        for (int64_t i = 0; i < tuple; ++i)
        {
            T sum = 0;
            for (int64_t corner = first; corner < first + count; ++corner)
                sum += from[corner * tuple + i];
            to[out * tuple + i] = sum / T(count);
        }
    }
};

/// Numbers of which a child takes the one of the corner that it belongs to.
struct Nearest
{
    const int32_t *from;
    int32_t *to;

    void copy(int64_t corner, int64_t out) const { to[out] = from[corner]; }
    void middle(int64_t a, int64_t, int64_t out) const { to[out] = from[a]; }
    void centre(int64_t, int64_t, int64_t own, int64_t out) const { to[out] = from[own]; }
};

/// The children of a face of `n` corners from `first` on; children are numbered as `childPoints` numbers them.
template <class Rule> void splitToQuads(const Rule &rule, int64_t first, int64_t n)
{
    for (int64_t i = 0; i < n; ++i)
    {
        const int64_t own = first + i, out = 4 * own, turn = n == 4 ? i : 0;
        rule.copy(own, out + turn);
        rule.middle(own, first + (i + 1) % n, out + ((turn + 1) & 3));
        rule.centre(first, n, own, out + ((turn + 2) & 3));
        rule.middle(own, first + (i + n - 1) % n, out + ((turn + 3) & 3));
    }
}

template <class Rule> void splitToTriangles(const Rule &rule, int64_t first)
{
    const int64_t out = 4 * first;
    for (int64_t i = 0; i < 3; ++i)
    {
        rule.copy(first + i, out + 4 * i);
        rule.middle(first + i, first + (i + 1) % 3, out + 3 * i + (i + 1) % 3);
        rule.middle(first + i, first + (i + 2) % 3, out + 3 * i + (i + 2) % 3);
        rule.middle(first + (i + 1) % 3, first + (i + 2) % 3, out + 9 + i);
    }
}

/// Take `level` steps; `ruleOf(from, to)` says what becomes of the values of the faces' corners.
template <class T, class RuleOf>
Numbers<T> split(const rq::Cage &cage, int level, Numbers<T> values, int64_t tuple, RQ_Type type, RuleOf &&ruleOf)
{
    std::vector<int64_t> first(cage.counts.size() + 1);
    for (size_t face = 0; face < cage.counts.size(); ++face)
        first[face + 1] = first[face] + cage.counts[face];
    const bool loop = cage.scheme == RQ_SCHEME_LOOP;
    for (int step = 0; step < level; ++step)
    {
        const Numbers<T> next(new RQ_DANumeric<T>(4 * values->entries(), tuple, type));
        const auto rule = ruleOf(values->data(), next->data());
        if (loop)
            host::parallelFor(values->entries() / 3, kFacesPerTask, [&](int64_t face) { splitToTriangles(rule, 3 * face); });
        else if (step > 0)
            host::parallelFor(values->entries() / 4, kFacesPerTask, [&](int64_t face) { splitToQuads(rule, 4 * face, 4); });
        else
            host::parallelFor(cage.faces(), kFacesPerTask,
                              [&](int64_t face) { splitToQuads(rule, first[size_t(face)], cage.counts[size_t(face)]); });
        values = next;
    }
    return values;
}

template <class T> RQ_DataArrayHandle linear(const rq::Cage &cage, int level, const RQ_DataArray &array)
{
    const int64_t tuple = array.getTupleSize();
    const rq::Values<T> values(array);
    const Numbers<T> start(new RQ_DANumeric<T>(values.data(), array.entries(), tuple, array.getTypeInfo()));
    return split(cage, level, start, tuple, array.getTypeInfo(), [tuple](const T *from, T *to) {
        return Blended<T>{from, to, tuple};
    });
}
}  // namespace

RQ_DataArrayHandle rq::nearestCorners(const Cage &cage, int level)
{
    const Numbers<int32_t> start(new RQ_DANumeric<int32_t>(int64_t(cage.points.size())));
    for (int64_t corner = 0; corner < start->entries(); ++corner)
        start->set(corner, int32_t(corner));
    return split(cage, level, start, 1, RQ_TYPE_NONE, [](const int32_t *from, int32_t *to) { return Nearest{from, to}; });
}

RQ_DataArrayHandle rq::linearCorners(const Cage &cage, int level, const RQ_DataArray &array)
{
    return array.getStorage() == RQ_STORAGE_REAL64 ? linear<double>(cage, level, array) : linear<float>(cage, level, array);
}

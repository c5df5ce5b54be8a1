#include <rq/data/DANumeric.h>
#include <rq/surface/detail/netKernel.h>
#include <rq/surface/detail/storedValues.h>

namespace
{
// A value costs some 0.5 ns, so a task is some 50 us of work; other places cost ten times as much.
constexpr int64_t kValuesPerTask = 131072;

/// Writes sums of type T as values of an attribute.
template <class T, class Out> struct Writer
{
    Out *target;
    int components;
    bool isRational;

    /// The sums of `count` samples from `sample` on, which it may spoil.
    void write(int64_t sample, int64_t count, T *sums) const
    {
        Out *out = target + sample * components;
        if (isRational)
            rq::divideRows(sums, count, components);
        std::transform(sums, sums + count * components, out, rq::stored<Out, T>);
    }
};

template <class T, class Out>
void evaluateCrossings(const rq::NetSampling &sampling, const rq::NetValues<T> &net, const Writer<T, Out> &writer)
{
    const rq::NetRows<T> rows(sampling, net, [&](int64_t line) { return sampling.u.weights(line); });
    const int64_t nu = sampling.u.count();
    const int64_t grain = std::max<int64_t>(1, kValuesPerTask / std::max<int64_t>(1, rows.values()));
    host::parallelForRange(sampling.v.count(), grain, [&](int64_t begin, int64_t end) {
        std::vector<T> sums(size_t(rows.values()));
        for (int64_t line = begin; line < end; ++line)
        {
            if constexpr (std::is_same_v<T, Out>)
                if (!net.isRational())
                {
                    rows.sum(sampling.v, line, sampling.v.weights(line), writer.target + line * rows.values());
                    continue;
                }
            rows.sum(sampling.v, line, sampling.v.weights(line), sums.data());
            writer.write(line * nu, nu, sums.data());
        }
    });
}

template <class T, class Out>
void evaluateOthers(const rq::NetSampling &sampling, const rq::NetValues<T> &net, const Writer<T, Out> &writer)
{
    host::parallelForRange(sampling.others, kValuesPerTask / 16 / std::max<int64_t>(1, net.width()) + 1,
                           [&](int64_t begin, int64_t end) {
                               rq::NetSum sum;
                               std::vector<T> sums(size_t(net.width()));
                               for (int64_t i = begin; i < end; ++i)
                               {
                                   sampling.otherSum(i, sum);
                                   rq::sumPlace(net, sum.vertices, sum.weights, sums.data());
                                   writer.write(sampling.crossings() + i, 1, sums.data());
                               }
                           });
}
}  // namespace

void rq::evaluateNet(const NetSampling &sampling, const RQ_DataArray &vertices, const RQ_DataArray *weights,
                     RQ_DataArray &target)
{
    dispatchStorage(vertices.getStorage(), [&](auto tag) {
        using Out = typename decltype(tag)::type;
        using T = SumOf<Out>;
        const NetValues<T> net(vertices, weights);
        const Writer<T, Out> writer{static_cast<RQ_DANumeric<Out> &>(target).data(), net.components(), net.isRational()};
        if (sampling.crossings() > 0)
            evaluateCrossings(sampling, net, writer);
        evaluateOthers(sampling, net, writer);
    });
}

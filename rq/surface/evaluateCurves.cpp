#include <rq/surface/detail/evaluateCurves.h>

#include <algorithm>
#include <cmath>

#include <host/bas/Parallel.h>
#include <host/bas/stream.h>
#include <rq/data/DANumeric.h>
#include <rq/surface/detail/curveKernel.h>
#include <rq/surface/detail/storedValues.h>

namespace
{
// A value costs 0.3 ns, so a task is some 50 us of work.
constexpr int64_t kValuesPerTask = 131072;

// Sums lie in a buffer of the first cache until they are written out.
constexpr int64_t kBufferValues = 4096;

// Whole numbers up to here are told apart by a double.
constexpr double kExactIntegers = 9007199254740992.0;

/// Collects sums of type T and writes them, converted, to where the samples of some curves begin.
template <class T, class Out> class Output
{
public:
    Output(Out *target, int components, bool rational, bool streamed)
        : target_(target), components_(components), width_(components + rational), streamed_(streamed),
          buffer_(kBufferValues)
    {}

    /// Room for `samples` rows, and whole groups, of `components` values, and one more for rational curves.
    T *room(int64_t samples)
    {
        const int64_t values = (samples + rq::kGroup) * width_;
        if (used_ + values > int64_t(buffer_.size()))
            flush();
        buffer_.resize(size_t(std::max(values, int64_t(buffer_.size()))));
        return buffer_.data() + used_;
    }
    void add(int64_t samples) { used_ += samples * width_; }

    void flush()
    {
        int64_t values = used_;
        if (width_ != components_)
            values = rq::divideRows(buffer_.data(), used_ / width_, components_);
        if constexpr (std::is_same_v<T, Out>)
        {
            if (streamed_)
                host::streamCopy(reinterpret_cast<char *>(target_), reinterpret_cast<const char *>(buffer_.data()),
                                 size_t(values) * sizeof(T));
            else
                std::copy_n(buffer_.data(), values, target_);
        }
        else
            std::transform(buffer_.data(), buffer_.data() + values, target_, rq::stored<Out, T>);
        target_ += values;
        used_ = 0;
    }

private:
    Out *target_;
    int components_;
    int width_;
    bool streamed_;
    int64_t used_ = 0;
    std::vector<T> buffer_;
};

/// One array of the vertices, to be summed in type T.
template <class T> class Evaluation
{
public:
    Evaluation(const rq::CurveSampling &sampling, const RQ_DataArray &vertices, const RQ_DataArray *weights)
        : sampling_(sampling), values_(vertices), components_(int(vertices.getTupleSize())), points_(sampling.points())
    {
        if (weights)
            weights_ = rq::Values<T>(*weights);
        for (const rq::SpanWeights &table : sampling.tables())
            tables_.emplace_back(table, width());
    }

    template <class Out> void run(Out *target) const
    {
        const int64_t samples = std::max<int64_t>(1, kValuesPerTask / width());
        const bool streamed = points_.sum() * components_ * int64_t(sizeof(Out)) >= host::kStreamedBytes;
        host::parallelForWeighted(
            points_.entries(), samples, [this](int64_t curve) { return points_.end(curve); },
            [&](int64_t begin, int64_t end) {
                Output<T, Out> output(target + points_.begin(begin) * components_, components_, isRational(), streamed);
                runCurves(begin, end, output);
                if (streamed)
                    host::finishStream();
            });
    }

private:
    bool isRational() const { return weights_.entries() > 0; }
    int width() const { return components_ + isRational(); }

    template <class Result> void runCurves(int64_t begin, int64_t end, Result &output) const
    {
        const rq::SpanShapes &shapes = sampling_.shapes();
        std::vector<T> row;
        rq::SpanWeights scratch;
        rq::GroupedWeights<T> grouped;
        for (int64_t curve = begin; curve < end; ++curve)
        {
            if (points_.count(curve) == 0)
                continue;
            const T *vertices = verticesOf(curve, row);
            const int64_t stride = int64_t(shapes.step(curve)) * width();
            const auto sum = [&](int64_t first, int64_t spans, const rq::SpanWeights &weights, int table) {
                if (table < 0)
                    grouped.build(weights, width());
                // As many spans at once as the buffer has room for.
                const int64_t atOnce = std::max<int64_t>(1, kBufferValues / 2 / (int64_t(weights.samples) * width()));
                for (const int64_t behind = first + spans; first < behind; first += atOnce)
                {
                    const int64_t count = std::min(atOnce, behind - first);
                    T *out = output.room(count * weights.samples);
                    rq::sumSpans(table < 0 ? grouped : tables_[size_t(table)], width(),
                                 rq::SpanRun<T>{vertices + first * stride, count, stride}, out);
                    output.add(count * weights.samples);
                }
            };
            sampling_.visitSpans(curve, scratch, sum);
        }
        output.flush();
    }

    /// The vertices of a curve in a row, as its spans want them: the first ones again behind the last of a closed one, and
    /// of a rational one multiplied by their weights, which stand behind.
    const T *verticesOf(int64_t curve, std::vector<T> &row) const
    {
        const rq::SpanShapes &shapes = sampling_.shapes();
        const int64_t first = shapes.firstVertex(curve), count = shapes.vertices(curve);
        if (!shapes.wraps() && !isRational())
            return values_.data() + first * components_;
        row.clear();
        for (int64_t i = 0; i < count + (shapes.wraps() ? shapes.order(curve) : 0); ++i)
        {
            const int64_t vertex = first + i % count;
            const T weight = isRational() ? weights_[vertex] : T(1);
            for (int c = 0; c < components_; ++c)
                row.push_back(isRational() ? values_(vertex, c) * weight : values_(vertex, c));
            if (isRational())
                row.push_back(weight);
        }
        return row.data();
    }

    const rq::CurveSampling &sampling_;
    rq::Values<T> values_;
    rq::Values<T> weights_;
    int components_;
    rq::Counts points_;
    std::vector<rq::GroupedWeights<T>> tables_;
};
}  // namespace

bool rq::isEvaluated(const RQ_DataArray &array)
{
    if (!RQisNumeric(array.getStorage()) || array.hasArrayEntries())
        return false;
    if (array.getStorage() != RQ_STORAGE_INT64)
        return true;
    double low, high;
    for (int c = 0; c < array.getTupleSize(); ++c)
    {
        array.getRange(low, high, c);
        if (!(std::abs(low) < kExactIntegers && std::abs(high) < kExactIntegers) && array.entries() > 0)
            return false;
    }
    return true;
}

RQ_DataArrayHandle rq::makeLike(const RQ_DataArray &array, int64_t entries)
{
    RQ_DataArrayHandle made;
    dispatchStorage(array.getStorage(), [&](auto tag) {
        using T = typename decltype(tag)::type;
        made = new RQ_DANumeric<T>(entries, array.getTupleSize(), array.getTypeInfo());
    });
    return made;
}

bool rq::evaluateCurves(const CurveSampling &sampling, const RQ_DataArray &vertices, const RQ_DataArray *weights,
                        RQ_DataArray &target, int64_t at)
{
    if (at < 0 || target.getTupleSize() != vertices.getTupleSize() || target.entries() - at < sampling.points().sumCounts())
        return false;
    bool written = false;
    dispatchStorage(vertices.getStorage(), [&](auto tag) {
        using Out = typename decltype(tag)::type;
        using T = SumOf<Out>;
        auto *values = dynamic_cast<RQ_DANumeric<Out> *>(&target);
        if (values)
            Evaluation<T>(sampling, vertices, weights).run(values->data() + at * values->getTupleSize());
        written = values != nullptr;
    });
    return written;
}

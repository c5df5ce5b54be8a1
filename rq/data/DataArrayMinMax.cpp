#include <cmath>

#include <host/bas/Parallel.h>
#include <rq/data/detail/blocks.h>
#include <host/bas/clones.h>

namespace
{
// A value costs 0.3 to 1 ns through views, so a block of three components is 15 to 50 us of work.
constexpr int64_t kEntriesPerBlock = 16384;

// In memory it costs 0.05 ns.
constexpr int64_t kEntriesPerMemoryBlock = 65536;

// Whole tuples of 1, 2, 3, 4, 6, 8, 12 and 24 components fit, and enough independent minima to keep the processor busy.
constexpr int64_t kLanes = 24;

// Memory answers several streams faster than one: 0.47 against 0.72 ns for three floats.
constexpr int64_t kStreams = 4;

/// The comparisons are false for not-a-number.  Answers how many values were seen: whole groups of lanes in every stream.
template <class T> HOST_CLONES int64_t findLaneExtremes(const T *values, int64_t count, T *lowest, T *highest)
{
    T low[kLanes], high[kLanes];
    std::copy_n(lowest, kLanes, low);
    std::copy_n(highest, kLanes, high);
    const int64_t length = count / (kLanes * kStreams) * kLanes;
    for (int64_t i = 0; i < length; i += kLanes)
        for (int64_t stream = 0; stream < kStreams; ++stream)
            for (int64_t lane = 0; lane < kLanes; ++lane)
            {
                const T value = values[stream * length + i + lane];
                low[lane] = value < low[lane] ? value : low[lane];
                high[lane] = value > high[lane] ? value : high[lane];
            }
    std::copy_n(low, kLanes, lowest);
    std::copy_n(high, kLanes, highest);
    return length * kStreams;
}

/// Least and greatest value of every component.  A component without any value keeps a minimum above its maximum.
template <class T> class Extremes
{
public:
    explicit Extremes(int64_t tuple) : min_(size_t(tuple), kHigh), max_(size_t(tuple), kLow) {}

    void add(const T *values, int64_t entries)
    {
        const int64_t tuple = int64_t(min_.size());
        const int64_t count = entries * tuple;
        int64_t i = 0;
        if (tuple <= kLanes && kLanes % tuple == 0 && count >= kLanes)
            i = addLanes(values, count);
        for (int64_t c = 0; i < count; ++i, c = c + 1 == tuple ? 0 : c + 1)
            addValue(size_t(c), values[i]);
    }

    void merge(const Extremes &other)
    {
        for (size_t c = 0; c < min_.size(); ++c)
        {
            min_[c] = std::min(min_[c], other.min_[c]);
            max_[c] = std::max(max_[c], other.max_[c]);
        }
    }

    bool has(size_t c) const { return min_[c] <= max_[c]; }
    double min(size_t c) const { return double(min_[c]); }
    double max(size_t c) const { return double(max_[c]); }

private:
    static constexpr T kHigh =
        std::numeric_limits<T>::has_infinity ? std::numeric_limits<T>::infinity() : std::numeric_limits<T>::max();
    static constexpr T kLow =
        std::numeric_limits<T>::has_infinity ? -std::numeric_limits<T>::infinity() : std::numeric_limits<T>::lowest();

    // The comparisons are false for not-a-number.
    void addValue(size_t c, T value)
    {
        min_[c] = value < min_[c] ? value : min_[c];
        max_[c] = value > max_[c] ? value : max_[c];
    }

    int64_t addLanes(const T *values, int64_t count)
    {
        T low[kLanes], high[kLanes];
        std::fill(low, low + kLanes, kHigh);
        std::fill(high, high + kLanes, kLow);
        const int64_t seen = findLaneExtremes(values, count, low, high);
        for (int64_t lane = 0; lane < kLanes; ++lane)
        {
            const size_t c = size_t(lane) % min_.size();
            min_[c] = std::min(min_[c], low[lane]);
            max_[c] = std::max(max_[c], high[lane]);
        }
        return seen;
    }

    std::vector<T> min_, max_;
};

// Without values, what consumers test for.
void makeEmptyRange(double &min, double &max)
{
    min = 1.7014117331926443e38;
    max = -5.877471754111438e-39;
}
}  // namespace

bool RQ_DataArray::computeMinMax(double *min, double *max) const
{
    return rq::dispatchStorage(getStorage(), [&](auto tag) {
        using Value = typename decltype(tag)::type;
        using T = std::conditional_t<std::same_as<Value, PLT_Half>, float, Value>;
        const auto all = host::parallelReduce(
            entries(), getBackingData() ? kEntriesPerMemoryBlock : kEntriesPerBlock, Extremes<T>(getTupleSize()),
            [&](int64_t begin, int64_t end) {
                Extremes<T> part(getTupleSize());
                rq::visitTuples<T>(*this, begin, end, [&](const T *values, int64_t, int64_t count) {
                    part.add(values, count);
                    return true;
                });
                return part;
            },
            [](Extremes<T> &into, const Extremes<T> &from) { into.merge(from); });
        for (int64_t c = 0; c < getTupleSize(); ++c)
            if (all.has(size_t(c)))
            {
                min[c] = all.min(size_t(c));
                max[c] = all.max(size_t(c));
            }
    });
}

bool RQ_DataArray::getMinMax(double *min, double *max) const
{
    const int64_t tuple = getTupleSize();
    std::fill(min, min + tuple, std::numeric_limits<double>::max());
    std::fill(max, max + tuple, std::numeric_limits<double>::lowest());
    if (getStorage() == RQ_STORAGE_STRING)
        return false;
    if (entries() < 1 || RQisNumeric(getStorage()))
        return entries() < 1 || computeMinMax(min, max);
    // Everything else reads as 0.
    std::fill(min, min + tuple, 0.0);
    std::fill(max, max + tuple, 0.0);
    return true;
}

void RQ_DataArray::getRange(double &min, double &max, int idx) const
{
    makeEmptyRange(min, max);
    const int64_t tuple = getTupleSize();
    if (entries() < 1 || idx < 0 || idx >= tuple)
        return;
    std::vector<double> low(size_t(tuple), 0.0), high(size_t(tuple), 0.0);
    if (RQisNumeric(getStorage()) && !getMinMax(low.data(), high.data()))
        return;
    if (low[size_t(idx)] <= high[size_t(idx)])
    {
        min = low[size_t(idx)];
        max = high[size_t(idx)];
    }
}

void RQ_DataArray::getRange(int64_t &min, int64_t &max, int idx) const
{
    struct Range
    {
        int64_t min = std::numeric_limits<int64_t>::max(), max = std::numeric_limits<int64_t>::min();
    };
    const int64_t tuple = getTupleSize();
    const Range all = host::parallelReduce(
        idx < 0 || idx >= tuple ? 0 : entries(), kEntriesPerBlock, Range(),
        [&](int64_t begin, int64_t end) {
            Range part;
            rq::visitTuples<int64_t>(*this, begin, end, [&](const int64_t *values, int64_t, int64_t count) {
                for (int64_t i = 0; i < count; ++i)
                {
                    part.min = std::min(part.min, values[i * tuple + idx]);
                    part.max = std::max(part.max, values[i * tuple + idx]);
                }
                return true;
            });
            return part;
        },
        [](Range &into, const Range &from) {
            into.min = std::min(into.min, from.min);
            into.max = std::max(into.max, from.max);
        });
    min = all.min;
    max = all.max;
}

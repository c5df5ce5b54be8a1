#include <atomic>
#include <bit>

#include <host/bas/Parallel.h>
#include <rq/data/detail/blocks.h>
#include <rq/data/mixId.h>

namespace
{
// A value costs 0.3 to 1 ns, so a block is 5 to 50 us of work.  Blocks are part of the hash.
constexpr int64_t kEntriesPerBlock = 16384;

uint64_t combine(uint64_t hash, uint64_t value) { return RQmixId(hash ^ (value + 0x9e3779b97f4a7c15u)); }

/// The bits that stand for a value: equal values have equal bits.
template <class T> uint64_t bitsOf(T value)
{
    if constexpr (std::is_integral_v<T>)
        return uint64_t(value);
    else
    {
        // Adding 0 turns -0 into 0.
        using Bits = std::conditional_t<sizeof(T) == 8, uint64_t, uint32_t>;
        using Wide = std::conditional_t<sizeof(T) == 8, double, float>;
        return std::bit_cast<Bits>(Wide(value) + Wide(0));
    }
}

/// Hashes a run of values in four lanes, which do not wait for each other.  Independent of how the run is handed over.
class RunHash
{
public:
    template <class T> void add(const T *values, int64_t count)
    {
        int64_t i = 0;
        for (; i < count && (count_ & 3); ++i)
            addTo(count_++ & 3, bitsOf(values[i]));
        for (; i + 4 <= count; i += 4, count_ += 4)
            for (int64_t lane = 0; lane < 4; ++lane)
                addTo(lane, bitsOf(values[i + lane]));
        for (; i < count; ++i)
            addTo(count_++ & 3, bitsOf(values[i]));
    }

    uint64_t result() const
    {
        uint64_t hash = uint64_t(count_);
        for (const uint64_t lane : lanes_)
            hash = combine(hash, lane);
        return hash;
    }

private:
    void addTo(int64_t lane, uint64_t bits) { lanes_[lane] = std::rotl(lanes_[lane] ^ bits, 27) * 0x9fb21c651e98df25u; }

    uint64_t lanes_[4] = {1, 2, 3, 4};
    int64_t count_ = 0;
};

template <class T> uint64_t hashEntries(const RQ_DataArray &array, int64_t begin, int64_t end)
{
    RunHash run;
    if (array.hasArrayEntries())
    {
        BAS_ValArray<T> values;
        for (int64_t i = begin; i < end; ++i)
        {
            values.clear();
            array.import(i, values);
            const int64_t size = int64_t(values.size());
            run.add(&size, 1);
            run.add(values.data(), size);
        }
    }
    else
        rq::visitBlocks<T>(array, begin, end, [&](const T *values, int64_t, int64_t count) {
            run.add(values, count * array.getTupleSize());
            return true;
        });
    return run.result();
}

// Comparing whole runs without a branch per value vectorises.
template <class T> bool areValuesEqual(const T *a, const T *b, int64_t count)
{
    constexpr int64_t kRun = 256;
    for (int64_t first = 0; first < count; first += kRun)
    {
        const int64_t last = std::min(first + kRun, count);
        int differing = 0;
        for (int64_t i = first; i < last; ++i)
            differing += !(a[i] == b[i]);
        if (differing)
            return false;
    }
    return true;
}

template <class T> bool areEntriesEqual(const RQ_DataArray &a, const RQ_DataArray &b, int64_t begin, int64_t end)
{
    if (a.hasArrayEntries())
    {
        BAS_ValArray<T> left, right;
        for (int64_t i = begin; i < end; ++i)
        {
            left.clear();
            right.clear();
            a.import(i, left);
            b.import(i, right);
            if (left != right)
                return false;
        }
        return true;
    }
    const int64_t tuple = a.getTupleSize();
    return rq::visitBlocks<T>(a, begin, end, [&](const T *left, int64_t firstLeft, int64_t countLeft) {
        return rq::visitBlocks<T>(b, firstLeft, firstLeft + countLeft, [&](const T *right, int64_t first, int64_t count) {
            return areValuesEqual(left + (first - firstLeft) * tuple, right, count * tuple);
        });
    });
}

template <class Value> uint64_t hashTexts(const RQ_DataArray &array, int64_t begin, int64_t end)
{
    RunHash run;
    BAS_Array<Value> values;
    for (int64_t i = begin; i < end; ++i)
    {
        rq::readTexts(array, i, values);
        for (const Value &value : values)
        {
            const int64_t bits = int64_t(value.hash());
            run.add(&bits, 1);
        }
    }
    return run.result();
}

template <class Value> bool areTextsEqual(const RQ_DataArray &a, const RQ_DataArray &b, int64_t begin, int64_t end)
{
    BAS_Array<Value> left, right;
    for (int64_t i = begin; i < end; ++i)
    {
        rq::readTexts(a, i, left);
        rq::readTexts(b, i, right);
        if (left != right)
            return false;
    }
    return true;
}

/// Call `visit(tag)` with the type of the array's values, texts and dictionaries included.
template <class Visitor> bool dispatchValues(RQ_Storage storage, Visitor &&visit)
{
    if (storage == RQ_STORAGE_STRING)
        visit(std::type_identity<BAS_StringHolder>());
    else if (storage == RQ_STORAGE_DICTIONARY)
        visit(std::type_identity<BAS_OptionsHolder>());
    else
        return rq::dispatchStorage(storage, visit);
    return true;
}
}  // namespace

uint64_t RQ_DataArray::hashRange(int64_t begin, int64_t end) const
{
    uint64_t hash = combine(uint64_t(getStorage()), uint64_t(getTupleSize()));
    dispatchValues(getStorage(), [&](auto tag) {
        using Value = typename decltype(tag)::type;
        hash = host::parallelReduce(
            std::max<int64_t>(0, end - begin), kEntriesPerBlock, hash,
            [&](int64_t first, int64_t last) {
                if constexpr (RQ_NumericValue<Value>)
                    return hashEntries<Value>(*this, begin + first, begin + last);
                else
                    return hashTexts<Value>(*this, begin + first, begin + last);
            },
            [](uint64_t &into, uint64_t from) { into = combine(into, from); });
    });
    return hash;
}

bool RQ_DataArray::isEqual(const RQ_DataArray &other) const
{
    if (this == &other)
        return true;
    if (entries() != other.entries() || getTupleSize() != other.getTupleSize() || getStorage() != other.getStorage() ||
        hasArrayEntries() != other.hasArrayEntries())
        return false;
    std::atomic<bool> equal{true};
    return dispatchValues(getStorage(),
                          [&](auto tag) {
                              using Value = typename decltype(tag)::type;
                              host::parallelForRange(entries(), kEntriesPerBlock, [&](int64_t begin, int64_t end) {
                                  if (!equal.load(std::memory_order_relaxed))
                                      return;
                                  bool same;
                                  if constexpr (RQ_NumericValue<Value>)
                                      same = areEntriesEqual<Value>(*this, other, begin, end);
                                  else
                                      same = areTextsEqual<Value>(*this, other, begin, end);
                                  if (!same)
                                      equal = false;
                              });
                          }) &&
           equal;
}

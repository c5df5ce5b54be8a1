#include <host/bas/Parallel.h>
#include <rq/data/detail/RunHash.h>
#include <rq/data/detail/blocks.h>

namespace
{
// A value costs 0.05 to 0.6 ns, so a block is 5 to 50 us of work.  Blocks are part of the hash.
constexpr int64_t kEntriesPerBlock = 16384;

template <class T> uint64_t hashEntries(const RQ_DataArray &array, int64_t begin, int64_t end)
{
    rq::hashing::RunHash run;
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

template <class Value> uint64_t hashTexts(const RQ_DataArray &array, int64_t begin, int64_t end)
{
    rq::hashing::RunHash run;
    BAS_Array<Value> values;
    for (int64_t i = begin; i < end; ++i)
    {
        rq::readTexts(array, i, values);
        if (array.hasArrayEntries())
        {
            const int64_t size = int64_t(values.size());
            run.add(&size, 1);
        }
        for (const Value &value : values)
        {
            const int64_t bits = int64_t(value.hash());
            run.add(&bits, 1);
        }
    }
    return run.result();
}
}  // namespace

uint64_t RQ_DataArray::hashRange(int64_t begin, int64_t end) const
{
    uint64_t hash = rq::hashing::combine(uint64_t(getStorage()), uint64_t(getTupleSize()));
    rq::dispatchValues(getStorage(), [&](auto tag) {
        using Value = typename decltype(tag)::type;
        hash = host::parallelReduce(
            std::max<int64_t>(0, end - begin), kEntriesPerBlock, hash,
            [&](int64_t first, int64_t last) {
                if constexpr (RQ_NumericValue<Value>)
                    return hashEntries<Value>(*this, begin + first, begin + last);
                else
                    return hashTexts<Value>(*this, begin + first, begin + last);
            },
            [](uint64_t &into, uint64_t from) { into = rq::hashing::combine(into, from); });
    });
    return hash;
}

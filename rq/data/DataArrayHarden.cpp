#include <host/bas/CopyCounter.h>
#include <rq/data/DAIndexedText.h>
#include <rq/data/detail/blocks.h>
#include <rq/data/detail/copyValues.h>

namespace
{
// One set of names for strings and for dictionaries.
void getDistinct(const RQ_DataArray &array, BAS_Array<BAS_StringHolder> &values) { array.getStrings(values); }
void getDistinct(const RQ_DataArray &array, BAS_Array<BAS_OptionsHolder> &values) { array.getDictionaries(values); }

template <class Value> constexpr bool kStrings = std::same_as<Value, BAS_StringHolder>;

template <class Value> int64_t indexOf(const RQ_DataArray &array, int64_t entry, int component)
{
    return kStrings<Value> ? array.getStringIndex(entry, component) : array.getDictIndex(entry, component);
}

/// Own the texts of an array: the distinct ones that are used, numbered by their first use.
template <class Value> RQ_DataArrayHandle copyIndexed(const RQ_DataArray &array)
{
    const int64_t entries = array.entries(), tuple = array.getTupleSize();
    BAS_Array<Value> known, used;
    getDistinct(array, known);
    std::vector<int32_t> number(known.size(), -1);
    BAS_ValArray<int32_t> indices(size_t(entries * tuple), -1);
    for (int64_t i = 0; i < entries; ++i)
        for (int64_t c = 0; c < tuple; ++c)
        {
            const int64_t index = indexOf<Value>(array, i, int(c));
            if (index < 0 || index >= int64_t(known.size()))
                continue;
            int32_t &place = number[size_t(index)];
            if (place < 0)
            {
                place = int32_t(used.size());
                used.push_back(known[size_t(index)]);
            }
            indices[size_t(i * tuple + c)] = place;
        }
    return RQ_DataArrayHandle(new RQ_DAIndexedText<Value>(std::move(used), std::move(indices), tuple, array.getTypeInfo()));
}

template <class Value> RQ_DataArrayHandle copyTexts(const RQ_DataArray &array)
{
    const int64_t entries = array.entries(), tuple = array.getTupleSize();
    if ((kStrings<Value> ? array.getStringIndexCount() : array.getDictIndexCount()) >= 0)
        return copyIndexed<Value>(array);
    // Not every array has a fill of its own.
    BAS_Array<Value> values(size_t(entries * tuple));
    rq::fillTexts(array, values.data(), 0, entries, -1, -1);
    return RQ_DAIndexedText<Value>::createIndexed(values.data(), entries, tuple, array.getTypeInfo());
}
}  // namespace

RQ_DataArrayHandle RQ_DataArray::harden() const
{
    const RQ_Storage storage = getStorage();
    if (hasArrayEntries() || storage == RQ_STORAGE_INVALID)
        return RQ_DataArrayHandle(const_cast<RQ_DataArray *>(this));
    RQ_DataArrayHandle copy;
    int64_t valueSize = RQsizeof(storage);
    if (storage == RQ_STORAGE_STRING)
    {
        copy = copyTexts<BAS_StringHolder>(*this);
        valueSize = sizeof(int32_t);
    }
    else if (storage == RQ_STORAGE_DICTIONARY)
    {
        copy = copyTexts<BAS_OptionsHolder>(*this);
        valueSize = sizeof(int32_t);
    }
    else
        rq::dispatchStorage(storage, [&](auto tag) { copy = rq::copyValues<typename decltype(tag)::type>(*this); });
    if (copy)
    {
        copy->copyDataId(*this);
        BAS_CopyCounter::add(BAS_COPY_HARDEN, entries() * getTupleSize() * valueSize);
    }
    return copy;
}

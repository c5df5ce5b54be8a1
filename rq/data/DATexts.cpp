#include <rq/data/DATexts.h>

#include <numeric>

#include <rq/data/detail/blocks.h>

namespace
{
template <class Value> constexpr bool kStrings = std::same_as<Value, BAS_StringHolder>;

/// Copy the distinct values, and number them; nothing when there are none, or they are of the other kind.
template <class Wanted, class Value>
void copyDistinct(const BAS_Array<Value> *distinct, BAS_Array<Wanted> &values, BAS_Array<int64_t> &indices)
{
    values.clear();
    if constexpr (std::same_as<Wanted, Value>)
        if (distinct)
            values = *distinct;
    indices.resize(values.size());
    std::iota(indices.begin(), indices.end(), 0);
}
}  // namespace

template <class Value>
RQ_DATexts<Value>::RQ_DATexts(int64_t tupleSize, RQ_Type type) : tupleSize_(std::max<int64_t>(1, tupleSize)), type_(type)
{}

template <class Value> RQ_Storage RQ_DATexts<Value>::getStorage() const
{
    return kStrings<Value> ? RQ_STORAGE_STRING : RQ_STORAGE_DICTIONARY;
}

template <class Value> BAS_StringHolder RQ_DATexts<Value>::getS(int64_t offset, int idx) const
{
    if constexpr (kStrings<Value>)
        return valueAt(offset, idx);
    else
        return {};
}

template <class Value> BAS_OptionsHolder RQ_DATexts<Value>::getDict(int64_t offset, int idx) const
{
    if constexpr (kStrings<Value>)
        return BAS_OptionsHolder::empty();
    else
        return valueAt(offset, idx);
}

template <class Value> int64_t RQ_DATexts<Value>::getStringIndexCount() const
{
    const BAS_Array<Value> *values = kStrings<Value> ? distinct() : nullptr;
    return values ? int64_t(values->size()) : -1;
}

template <class Value> int64_t RQ_DATexts<Value>::getStringIndex(int64_t offset, int idx) const
{
    return kStrings<Value> ? indexAt(offset, idx) : -1;
}

template <class Value>
void RQ_DATexts<Value>::getIndexedStrings(BAS_Array<BAS_StringHolder> &strings, BAS_Array<int64_t> &indices) const
{
    copyDistinct(distinct(), strings, indices);
}

template <class Value>
void RQ_DATexts<Value>::fillStringArray(BAS_StringHolder *data, int64_t start, int64_t length, int tsize, int stride) const
{
    rq::fillTexts(*this, data, start, length, tsize, stride);
}

template <class Value> int64_t RQ_DATexts<Value>::getDictIndexCount() const
{
    const BAS_Array<Value> *values = kStrings<Value> ? nullptr : distinct();
    return values ? int64_t(values->size()) : -1;
}

template <class Value> int64_t RQ_DATexts<Value>::getDictIndex(int64_t offset, int idx) const
{
    return kStrings<Value> ? -1 : indexAt(offset, idx);
}

template <class Value>
void RQ_DATexts<Value>::getIndexedDicts(BAS_Array<BAS_OptionsHolder> &dicts, BAS_Array<int64_t> &indices) const
{
    copyDistinct(distinct(), dicts, indices);
}

template <class Value>
void RQ_DATexts<Value>::fillDictionaryArray(BAS_OptionsHolder *data, int64_t start, int64_t length, int tsize,
                                            int stride) const
{
    rq::fillTexts(*this, data, start, length, tsize, stride);
}

template <class Value> const Value &RQ_DATexts<Value>::none()
{
    static const Value empty;
    return empty;
}

template <class Value> int64_t RQ_DATexts<Value>::memoryOf(const BAS_Array<Value> &values)
{
    int64_t bytes = int64_t(values.capacity() * sizeof(Value));
    for (const Value &value : values)
        bytes += value.getMemoryUsage();
    return bytes;
}

template class RQ_DATexts<BAS_StringHolder>;
template class RQ_DATexts<BAS_OptionsHolder>;

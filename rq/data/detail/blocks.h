#pragma once

#include <algorithm>
#include <limits>
#include <vector>

#include <rq/data/DataArray.h>

namespace rq
{
/// What a block read writes of each entry, after the rules of `fillArray`.
struct BlockShape
{
    BlockShape(const RQ_DataArray &array, int tsize, int stride_)
    {
        const int tuple = int(std::min<int64_t>(array.getTupleSize(), std::numeric_limits<int>::max()));
        components = tsize < 1 ? tuple : std::min(tsize, tuple);
        stride = stride_ >= 1 ? stride_ : tsize < 1 ? tuple : tsize;
    }

    int components;
    int stride;
};

// Entries that are read at a time where values do not lie in memory: a few kilobytes, so the buffer stays in the first
// cache.
constexpr int64_t kBlockEntries = 1024;

/// The same for entries of many values: fewer of them.
constexpr int64_t blockEntries(int64_t values)
{
    return std::clamp<int64_t>(4 * kBlockEntries / std::max<int64_t>(1, values), 1, kBlockEntries);
}

/// Call `visit(const T *values, int64_t first, int64_t count)` for entries [begin, end), all components, in order: once over
/// the array's own memory when it holds T, else block by block.  Stops when `visit` answers false, and answers that.
template <RQ_NumericValue T, class Visitor>
bool visitBlocks(const RQ_DataArray &array, int64_t begin, int64_t end, Visitor &&visit)
{
    const int64_t tuple = array.getTupleSize();
    if (begin >= end || tuple < 1)
        return true;
    if (array.getStorage() == RQstorageOf<T>)
        if (const T *values = static_cast<const T *>(array.getBackingData()))
            return visit(values + begin * tuple, begin, end - begin);
    const int64_t height = blockEntries(tuple);
    std::vector<T> block(size_t(std::min(end - begin, height) * tuple));
    for (int64_t first = begin; first < end; first += height)
    {
        const int64_t count = std::min(end - first, height);
        array.fillArray(block.data(), first, count);
        if (!visit(static_cast<const T *>(block.data()), first, count))
            return false;
    }
    return true;
}

/// Call `visit` as above with the values of entries [begin, end), whole tuples of them.  The values of entries that are
/// arrays come end to end, so `count` is the number of tuples then.
template <RQ_NumericValue T, class Visitor>
bool visitTuples(const RQ_DataArray &array, int64_t begin, int64_t end, Visitor &&visit)
{
    const int64_t tuple = array.getTupleSize();
    if (!array.hasArrayEntries() || tuple < 1)
        return visitBlocks<T>(array, begin, end, visit);
    BAS_Array<T> values;
    BAS_Array<int> sizes;
    for (int64_t first = begin; first < end; first += kBlockEntries)
    {
        array.fillArray(values, sizes, first, std::min(end - first, kBlockEntries));
        if (!visit(static_cast<const T *>(values.data()), first, int64_t(values.size()) / tuple))
            return false;
    }
    return true;
}

/// Read a text or dictionary.
template <class Value> Value textAt(const RQ_DataArray &array, int64_t entry, int component)
{
    if constexpr (std::same_as<Value, BAS_StringHolder>)
        return array.getS(entry, component);
    else
        return array.getDict(entry, component);
}

/// Read the texts or dictionaries of an entry: its components, or its values when entries are arrays.
template <class Value> void readTexts(const RQ_DataArray &array, int64_t entry, BAS_Array<Value> &values)
{
    values.clear();
    if (array.hasArrayEntries())
        array.import(entry, values);
    else
        for (int c = 0; c < array.getTupleSize(); ++c)
            values.push_back(textAt<Value>(array, entry, c));
}

/// Read a block of texts or dictionaries after the rules of `fillArray`.
template <class Value>
void fillTexts(const RQ_DataArray &array, Value *data, int64_t start, int64_t length, int tsize, int stride)
{
    const BlockShape shape(array, tsize, stride);
    for (int64_t i = 0; i < length; ++i)
        for (int c = 0; c < shape.components; ++c)
            data[i * shape.stride + c] = textAt<Value>(array, start + i, c);
}

/// Call `visit(tag)` with the type of the array's values, texts and dictionaries included.
template <class Visitor> bool dispatchValues(RQ_Storage storage, Visitor &&visit)
{
    if (storage == RQ_STORAGE_STRING)
        visit(std::type_identity<BAS_StringHolder>());
    else if (storage == RQ_STORAGE_DICTIONARY)
        visit(std::type_identity<BAS_OptionsHolder>());
    else
        return dispatchStorage(storage, visit);
    return true;
}
}  // namespace rq

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
    std::vector<T> block(size_t(std::min(end - begin, kBlockEntries) * tuple));
    for (int64_t first = begin; first < end; first += kBlockEntries)
    {
        const int64_t count = std::min(end - first, kBlockEntries);
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

/// Read the texts or dictionaries of an entry: its components, or its values when entries are arrays.
inline void readTexts(const RQ_DataArray &array, int64_t entry, BAS_Array<BAS_StringHolder> &values)
{
    values.clear();
    if (array.hasArrayEntries())
        array.import(entry, values);
    else
        for (int c = 0; c < array.getTupleSize(); ++c)
            values.push_back(array.getS(entry, c));
}

inline void readTexts(const RQ_DataArray &array, int64_t entry, BAS_Array<BAS_OptionsHolder> &values)
{
    values.clear();
    if (array.hasArrayEntries())
        array.import(entry, values);
    else
        for (int c = 0; c < array.getTupleSize(); ++c)
            values.push_back(array.getDict(entry, c));
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

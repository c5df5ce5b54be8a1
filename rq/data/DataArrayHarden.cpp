#include <host/bas/CopyCounter.h>
#include <rq/data/DAIndexedString.h>
#include <rq/data/detail/copyValues.h>

namespace
{
/// Own the texts of an array: the distinct ones that are used, numbered by their first use.
RQ_DataArrayHandle copyStrings(const RQ_DataArray &array)
{
    const int64_t entries = array.entries(), tuple = array.getTupleSize();
    BAS_Array<BAS_StringHolder> known, used;
    array.getStrings(known);
    std::vector<int32_t> number(known.size(), -1);
    BAS_ValArray<int32_t> indices(size_t(entries * tuple), -1);
    for (int64_t i = 0; i < entries; ++i)
        for (int64_t c = 0; c < tuple; ++c)
        {
            const int64_t index = array.getStringIndex(i, int(c));
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
    return RQ_DataArrayHandle(new RQ_DAIndexedString(std::move(used), std::move(indices), tuple, array.getTypeInfo()));
}

RQ_DataArrayHandle copyUnindexedStrings(const RQ_DataArray &array)
{
    const int64_t entries = array.entries(), tuple = array.getTupleSize();
    BAS_Array<BAS_StringHolder> values(size_t(entries * tuple));
    for (int64_t i = 0; i < entries; ++i)
        for (int64_t c = 0; c < tuple; ++c)
            values[size_t(i * tuple + c)] = array.getS(i, int(c));
    return RQ_DAIndexedString::createIndexed(values.data(), entries, tuple, array.getTypeInfo());
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
        copy = getStringIndexCount() >= 0 ? copyStrings(*this) : copyUnindexedStrings(*this);
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

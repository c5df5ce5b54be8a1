#include <rq/data/detail/copyEntries.h>

#include <host/bas/CopyCounter.h>
#include <rq/data/DANumericArray.h>
#include <rq/data/DATextArray.h>
#include <rq/data/detail/blocks.h>

namespace
{
template <class Array> RQ_CountArray countsOf(const Array &sizes)
{
    return RQ_CountArray(RQ_DataArrayHandle(new RQ_DANumeric<int32_t>(sizes.data(), int64_t(sizes.size()))));
}

template <class T> RQ_DataArrayHandle copyNumbers(const RQ_DataArray &array)
{
    BAS_Array<T> values;
    BAS_Array<int> sizes;
    array.fillArray(values, sizes, 0, array.entries());
    const BAS_IntrusivePtr<RQ_DANumeric<T>> all(new RQ_DANumeric<T>(values.data(), int64_t(values.size())));
    return RQ_DataArrayHandle(new RQ_DANumericArray<T>(all, countsOf(sizes), array.getTupleSize(), array.getTypeInfo()));
}

template <class Value> RQ_DataArrayHandle copyTexts(const RQ_DataArray &array)
{
    BAS_Array<Value> values, all;
    BAS_Array<int> sizes;
    for (int64_t i = 0; i < array.entries(); ++i)
    {
        rq::readTexts(array, i, values);
        sizes.push_back(int(values.size()));
        all.insert(all.end(), values.begin(), values.end());
    }
    return RQ_DataArrayHandle(
        new RQ_DATextArray<Value>(std::move(all), countsOf(sizes), array.getTupleSize(), array.getTypeInfo()));
}
}  // namespace

RQ_DataArrayHandle rq::copyEntries(const RQ_DataArray &array)
{
    const RQ_Storage storage = array.getStorage();
    RQ_DataArrayHandle copy;
    if (storage == RQ_STORAGE_STRING)
        copy = copyTexts<BAS_StringHolder>(array);
    else if (storage == RQ_STORAGE_DICTIONARY)
        copy = copyTexts<BAS_OptionsHolder>(array);
    else
        dispatchStorage(storage, [&](auto tag) { copy = copyNumbers<typename decltype(tag)::type>(array); });
    if (copy)
    {
        copy->copyDataId(array);
        BAS_CopyCounter::add(BAS_COPY_HARDEN, copy->getTotalArrayEntries() * RQsizeof(storage));
    }
    return copy;
}

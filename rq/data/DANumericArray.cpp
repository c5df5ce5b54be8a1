#include <rq/data/DANumericArray.h>

#include <rq/data/convert.h>
#include <rq/data/detail/TypedArrayImpl.h>
#include <rq/data/detail/TypedEntriesImpl.h>

template <RQ_NumericValue T>
RQ_DANumericArray<T>::RQ_DANumericArray(const Values &values, const RQ_CountArray &counts, int64_t tupleSize, RQ_Type type)
    : values_(values), counts_(counts), tupleSize_(std::max<int64_t>(1, tupleSize)), type_(type)
{
    if (counts_.sumCounts() > (values_ ? values_->entries() * values_->getTupleSize() : 0))
        counts_.clear();
}

template <RQ_NumericValue T> const char *RQ_DANumericArray<T>::className() const { return "RQ_DANumericArray"; }

template <RQ_NumericValue T> int64_t RQ_DANumericArray<T>::getMemoryUsage() const
{
    return int64_t(sizeof(*this) - sizeof(counts_)) + counts_.getMemoryUsage() + (values_ ? values_->getMemoryUsage() : 0);
}

template <RQ_NumericValue T>
template <RQ_NumericValue To>
To RQ_DANumericArray<T>::valueAs(int64_t offset, int component) const
{
    const auto [begin, count] = counts_.getOffsetCount(offset);
    return component >= 0 && component < count ? RQconvert<To>(values_->data()[begin + component]) : To(0.0f);
}

template <RQ_NumericValue T>
template <class Out>
bool RQ_DANumericArray<T>::copyEntries(int64_t start, int64_t length, Out &values, BAS_Array<int> *sizes) const
{
    int64_t count = 0;
    for (int64_t i = 0; i < length; ++i)
    {
        const int64_t size = itemSize(start + i);
        count += size;
        if (sizes)
            (*sizes)[size_t(i)] = int(size);
    }
    values.resize(size_t(count));
    if (count > 0)
        rq::convertValues(values_->data() + counts_.getOffset(start), RQstorageOf<T>, values.data(),
                          RQstorageOf<typename Out::value_type>, count);
    return true;
}

#define RQ_INSTANTIATE(T, NAME, ARRAY)                                                                                      \
    template class RQ_TypedEntries<RQ_DANumericArray<T>, RQ_DANumbers>;                                                     \
    template class RQ_TypedArray<RQ_DANumericArray<T>, RQ_TypedEntries<RQ_DANumericArray<T>, RQ_DANumbers>>;                \
    template class RQ_DANumericArray<T>;
RQ_NUMERIC_TYPES(RQ_INSTANTIATE)

#include <rq/data/DANumericArray.h>

#include <rq/data/convert.h>
#include <rq/data/detail/TypedArrayImpl.h>

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

namespace
{
/// Replace `out` by a run of values.
template <class Array, class T> void copyRun(const RQ_DANumeric<T> *values, int64_t begin, int64_t count, Array &out)
{
    out.resize(size_t(count));
    if (count > 0)
        rq::convertValues(values->data() + begin, RQstorageOf<T>, out.data(), RQstorageOf<typename Array::value_type>,
                          count);
}
}  // namespace

#define RQ_DEFINE(To, NAME, ARRAY)                                                                                          \
    template <RQ_NumericValue T> bool RQ_DANumericArray<T>::get##ARRAY(BAS_ValArray<To> &values, int64_t offset) const      \
    {                                                                                                                       \
        const auto [begin, count] = counts_.getOffsetCount(offset);                                                         \
        copyRun(values_.get(), begin, count, values);                                                                       \
        return true;                                                                                                        \
    }                                                                                                                       \
    template <RQ_NumericValue T>                                                                                            \
    void RQ_DANumericArray<T>::doFillArrayAttr(BAS_Array<To> &data, BAS_Array<int> &sizes, int64_t start, int64_t length)   \
        const                                                                                                               \
    {                                                                                                                       \
        sizes.resize(size_t(std::max<int64_t>(0, length)));                                                                 \
        const int64_t begin = sizes.empty() ? 0 : counts_.getOffset(start);                                                 \
        int64_t total = 0;                                                                                                  \
        for (size_t i = 0; i < sizes.size(); ++i)                                                                           \
            total += sizes[i] = int(itemSize(start + int64_t(i)));                                                          \
        copyRun(values_.get(), begin, total, data);                                                                         \
    }
RQ_NUMERIC_TYPES(RQ_DEFINE)

#define RQ_INSTANTIATE(T, NAME, ARRAY)                                                                                      \
    template class RQ_TypedArray<RQ_DANumericArray<T>, RQ_DANumbers>;                                                       \
    template class RQ_DANumericArray<T>;
RQ_NUMERIC_TYPES(RQ_INSTANTIATE)

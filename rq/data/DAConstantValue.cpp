#include <rq/data/DAConstantValue.h>

#include <algorithm>
#include <cmath>

#include <host/bas/stream.h>
#include <rq/data/convert.h>
#include <rq/data/detail/TypedArrayImpl.h>

template <RQ_NumericValue T>
RQ_DAConstantValue<T>::RQ_DAConstantValue(int64_t size, T value, int64_t tupleSize, RQ_Type type)
    : size_(std::max<int64_t>(0, size)), tupleSize_(std::max<int64_t>(0, tupleSize)), value_(value), type_(type)
{}

template <RQ_NumericValue T> const char *RQ_DAConstantValue<T>::className() const { return "RQ_DAConstantValue"; }

template <RQ_NumericValue T> template <RQ_NumericValue To> To RQ_DAConstantValue<T>::valueAs(int64_t, int) const
{
    return RQconvert<To>(value_);
}

template <RQ_NumericValue T>
template <RQ_NumericValue To>
void RQ_DAConstantValue<T>::fillBlock(To *out, int64_t, int64_t length, int components, int stride) const
{
    const To value = RQconvert<To>(value_);
    if (components == stride)
        host::writeBlocks(out, length * components, [&](To *to, int64_t, int64_t count) { std::fill_n(to, count, value); });
    else
        for (int64_t i = 0; i < length; ++i)
            std::fill_n(out + i * stride, components, value);
}

template <RQ_NumericValue T> bool RQ_DAConstantValue<T>::computeMinMax(double *min, double *max) const
{
    const double value = double(value_);
    if (size_ > 0 && !std::isnan(value))
    {
        std::fill(min, min + tupleSize_, value);
        std::fill(max, max + tupleSize_, value);
    }
    return true;
}

#define RQ_INSTANTIATE(T, NAME, ARRAY)                                                                                      \
    template class RQ_TypedArray<RQ_DAConstantValue<T>, RQ_DANumbers>;                                                      \
    template class RQ_DAConstantValue<T>;
RQ_NUMERIC_TYPES(RQ_INSTANTIATE)

#pragma once

#include <rq/data/DANumbers.h>
#include <rq/data/TypedArray.h>

/// One stored value for every component of every entry.
///
/// Failure  sizes below 0 count as 0
/// Threads  immutable after construction, safe to read from any thread
/// Cost     the same few bytes for any number of entries
template <RQ_NumericValue T>
class RQ_API RQ_DAConstantValue final : public RQ_TypedArray<RQ_DAConstantValue<T>, RQ_DANumbers>
{
public:
    explicit RQ_DAConstantValue(int64_t size, T value, int64_t tupleSize = 1, RQ_Type type = RQ_TYPE_NONE);

    const char *className() const override;
    RQ_Storage getStorage() const override { return RQstorageOf<T>; }
    int64_t entries() const override { return size_; }
    int64_t getTupleSize() const override { return tupleSize_; }
    int64_t getMemoryUsage() const override { return sizeof(*this); }
    RQ_Type getTypeInfo() const override { return type_; }

    T value() const { return value_; }

private:
    friend RQ_TypedArray<RQ_DAConstantValue<T>, RQ_DANumbers>;

    template <RQ_NumericValue To> To valueAs(int64_t offset, int component) const;
    template <RQ_NumericValue To> void fillBlock(To *out, int64_t start, int64_t length, int components, int stride) const;
    bool computeMinMax(double *min, double *max) const override;

    int64_t size_;
    int64_t tupleSize_;
    T value_;
    RQ_Type type_;
};

extern template class RQ_TypedArray<RQ_DAConstantValue<double>, RQ_DANumbers>;
extern template class RQ_DAConstantValue<double>;
extern template class RQ_TypedArray<RQ_DAConstantValue<float>, RQ_DANumbers>;
extern template class RQ_DAConstantValue<float>;
extern template class RQ_TypedArray<RQ_DAConstantValue<PLT_Half>, RQ_DANumbers>;
extern template class RQ_DAConstantValue<PLT_Half>;
extern template class RQ_TypedArray<RQ_DAConstantValue<int64_t>, RQ_DANumbers>;
extern template class RQ_DAConstantValue<int64_t>;
extern template class RQ_TypedArray<RQ_DAConstantValue<int32_t>, RQ_DANumbers>;
extern template class RQ_DAConstantValue<int32_t>;
extern template class RQ_TypedArray<RQ_DAConstantValue<int16_t>, RQ_DANumbers>;
extern template class RQ_DAConstantValue<int16_t>;
extern template class RQ_TypedArray<RQ_DAConstantValue<int8_t>, RQ_DANumbers>;
extern template class RQ_DAConstantValue<int8_t>;
extern template class RQ_TypedArray<RQ_DAConstantValue<uint8_t>, RQ_DANumbers>;
extern template class RQ_DAConstantValue<uint8_t>;

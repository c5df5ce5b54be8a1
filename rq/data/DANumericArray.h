#pragma once

#include <rq/data/CountArray.h>
#include <rq/data/DANumeric.h>
#include <rq/data/TypedEntries.h>

/// Entries that are arrays of numbers, of any length each.
///
/// Shape    the values of all entries lie end to end; single values and rows are the first ones of an entry, and 0 behind
///          its end
/// Failure  no entries when the counts want more values than there are
/// Threads  immutable after construction, safe to read from any thread
/// Cost     many entries at once, through `fillArray` with sizes, are one conversion
template <RQ_NumericValue T>
class RQ_API RQ_DANumericArray final
    : public RQ_TypedArray<RQ_DANumericArray<T>, RQ_TypedEntries<RQ_DANumericArray<T>, RQ_DANumbers>>
{
public:
    using Values = BAS_IntrusivePtr<RQ_DANumeric<T>>;

    /// Share the values; entry i has `counts.getCount(i)` of them.  A tuple size below 1 becomes 1.
    RQ_DANumericArray(const Values &values, const RQ_CountArray &counts, int64_t tupleSize = 1, RQ_Type type = RQ_TYPE_NONE);

    const char *className() const override;
    RQ_Storage getStorage() const override { return RQstorageOf<T>; }
    int64_t entries() const override { return counts_.entries(); }
    int64_t itemSize(int64_t offset) const override { return counts_.getCount(offset); }
    int64_t getTotalArrayEntries() const override { return counts_.sumCounts(); }
    int64_t getTupleSize() const override { return tupleSize_; }
    int64_t getMemoryUsage() const override;
    RQ_Type getTypeInfo() const override { return type_; }
    bool hasArrayEntries() const override { return true; }
    bool getPointerAliasing(const void *data) const override { return values_ && values_->getPointerAliasing(data); }

private:
    using Entries = RQ_TypedEntries<RQ_DANumericArray<T>, RQ_DANumbers>;
    friend Entries;
    friend RQ_TypedArray<RQ_DANumericArray<T>, Entries>;

    template <RQ_NumericValue To> To valueAs(int64_t offset, int component) const;
    template <class Out> bool copyEntries(int64_t start, int64_t length, Out &values, BAS_Array<int> *sizes) const;

    Values values_;
    RQ_CountArray counts_;
    int64_t tupleSize_;
    RQ_Type type_;
};

extern template class RQ_TypedEntries<RQ_DANumericArray<double>, RQ_DANumbers>;
extern template class RQ_TypedArray<RQ_DANumericArray<double>, RQ_TypedEntries<RQ_DANumericArray<double>, RQ_DANumbers>>;
extern template class RQ_DANumericArray<double>;
extern template class RQ_TypedEntries<RQ_DANumericArray<float>, RQ_DANumbers>;
extern template class RQ_TypedArray<RQ_DANumericArray<float>, RQ_TypedEntries<RQ_DANumericArray<float>, RQ_DANumbers>>;
extern template class RQ_DANumericArray<float>;
extern template class RQ_TypedEntries<RQ_DANumericArray<PLT_Half>, RQ_DANumbers>;
extern template class RQ_TypedArray<RQ_DANumericArray<PLT_Half>, RQ_TypedEntries<RQ_DANumericArray<PLT_Half>, RQ_DANumbers>>;
extern template class RQ_DANumericArray<PLT_Half>;
extern template class RQ_TypedEntries<RQ_DANumericArray<int64_t>, RQ_DANumbers>;
extern template class RQ_TypedArray<RQ_DANumericArray<int64_t>, RQ_TypedEntries<RQ_DANumericArray<int64_t>, RQ_DANumbers>>;
extern template class RQ_DANumericArray<int64_t>;
extern template class RQ_TypedEntries<RQ_DANumericArray<int32_t>, RQ_DANumbers>;
extern template class RQ_TypedArray<RQ_DANumericArray<int32_t>, RQ_TypedEntries<RQ_DANumericArray<int32_t>, RQ_DANumbers>>;
extern template class RQ_DANumericArray<int32_t>;
extern template class RQ_TypedEntries<RQ_DANumericArray<int16_t>, RQ_DANumbers>;
extern template class RQ_TypedArray<RQ_DANumericArray<int16_t>, RQ_TypedEntries<RQ_DANumericArray<int16_t>, RQ_DANumbers>>;
extern template class RQ_DANumericArray<int16_t>;
extern template class RQ_TypedEntries<RQ_DANumericArray<int8_t>, RQ_DANumbers>;
extern template class RQ_TypedArray<RQ_DANumericArray<int8_t>, RQ_TypedEntries<RQ_DANumericArray<int8_t>, RQ_DANumbers>>;
extern template class RQ_DANumericArray<int8_t>;
extern template class RQ_TypedEntries<RQ_DANumericArray<uint8_t>, RQ_DANumbers>;
extern template class RQ_TypedArray<RQ_DANumericArray<uint8_t>, RQ_TypedEntries<RQ_DANumericArray<uint8_t>, RQ_DANumbers>>;
extern template class RQ_DANumericArray<uint8_t>;

#include <rq/data/DATextArray.h>

template <class Value>
RQ_DATextArray<Value>::RQ_DATextArray(BAS_Array<Value> values, const RQ_CountArray &counts, int64_t tupleSize, RQ_Type type)
    : RQ_DATexts<Value>(tupleSize, type), values_(std::move(values)), tracked_(int64_t(values_.capacity() * sizeof(Value))),
      counts_(counts)
{
    if (counts_.sumCounts() > int64_t(values_.size()))
        counts_.clear();
}

template <class Value> const char *RQ_DATextArray<Value>::className() const
{
    return std::same_as<Value, BAS_StringHolder> ? "RQ_DAStringArray" : "RQ_DADictArray";
}

template <class Value> int64_t RQ_DATextArray<Value>::getMemoryUsage() const
{
    return int64_t(sizeof(*this) - sizeof(counts_)) + counts_.getMemoryUsage() + this->memoryOf(values_);
}

template <class Value> const Value &RQ_DATextArray<Value>::valueAt(int64_t offset, int idx) const
{
    const auto [begin, count] = counts_.getOffsetCount(offset);
    return idx >= 0 && idx < count ? values_[size_t(begin + idx)] : this->none();
}

template <class Value>
template <class Wanted>
bool RQ_DATextArray<Value>::copyEntry(BAS_Array<Wanted> &values, int64_t offset) const
{
    if constexpr (std::same_as<Wanted, Value>)
    {
        const auto [begin, count] = counts_.getOffsetCount(offset);
        values.assign(values_.begin() + begin, values_.begin() + begin + count);
        return true;
    }
    return false;
}

template <class Value> bool RQ_DATextArray<Value>::getSA(BAS_Array<BAS_StringHolder> &strings, int64_t offset) const
{
    return copyEntry(strings, offset);
}

template <class Value> bool RQ_DATextArray<Value>::getDictA(BAS_Array<BAS_OptionsHolder> &dicts, int64_t offset) const
{
    return copyEntry(dicts, offset);
}

template class RQ_DATextArray<BAS_StringHolder>;
template class RQ_DATextArray<BAS_OptionsHolder>;

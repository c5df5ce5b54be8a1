#include <rq/data/DAConstantText.h>

#include <algorithm>

template <class Value>
RQ_DAConstantText<Value>::RQ_DAConstantText(int64_t size, const Value &value, int64_t tupleSize, RQ_Type type)
    : RQ_DATexts<Value>(tupleSize, type), size_(std::max<int64_t>(0, size)), distinct_(value.isEmpty() ? 0 : 1, value)
{}

template <class Value> const char *RQ_DAConstantText<Value>::className() const
{
    return std::same_as<Value, BAS_StringHolder> ? "RQ_DAConstantString" : "RQ_DAConstantDict";
}

template <class Value> int64_t RQ_DAConstantText<Value>::getMemoryUsage() const
{
    return int64_t(sizeof(*this)) + this->memoryOf(distinct_);
}

template class RQ_DAConstantText<BAS_StringHolder>;
template class RQ_DAConstantText<BAS_OptionsHolder>;

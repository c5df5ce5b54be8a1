#include <rq/data/DAText.h>

template <class Value>
RQ_DAText<Value>::RQ_DAText(BAS_Array<Value> values, int64_t tupleSize, RQ_Type type)
    : RQ_DATexts<Value>(tupleSize, type), values_(std::move(values)), tracked_(int64_t(values_.capacity() * sizeof(Value)))
{}

template <class Value> const char *RQ_DAText<Value>::className() const
{
    return std::same_as<Value, BAS_StringHolder> ? "RQ_DAString" : "RQ_DADict";
}

template <class Value> int64_t RQ_DAText<Value>::getMemoryUsage() const
{
    return int64_t(sizeof(*this)) + this->memoryOf(values_);
}

template <class Value> const Value &RQ_DAText<Value>::valueAt(int64_t offset, int idx) const
{
    return values_[size_t(offset * this->getTupleSize() + idx)];
}

template class RQ_DAText<BAS_StringHolder>;
template class RQ_DAText<BAS_OptionsHolder>;

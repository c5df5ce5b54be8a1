#include <rq/data/DAIndexedText.h>

#include <algorithm>
#include <unordered_map>

template <class Value>
RQ_DAIndexedText<Value>::RQ_DAIndexedText(BAS_Array<Value> distinct, BAS_ValArray<int32_t> indices, int64_t tupleSize,
                                          RQ_Type type)
    : RQ_DATexts<Value>(tupleSize, type), distinct_(std::move(distinct)), indices_(std::move(indices)),
      tracked_(int64_t(distinct_.capacity() * sizeof(Value) + indices_.capacity() * sizeof(int32_t)))
{}

template <class Value>
RQ_DataArrayHandle RQ_DAIndexedText<Value>::createIndexed(const Value *values, int64_t entries, int64_t tupleSize,
                                                          RQ_Type type)
{
    struct Hash
    {
        size_t operator()(const Value &value) const { return size_t(value.hash()); }
    };
    BAS_Array<Value> distinct;
    BAS_ValArray<int32_t> indices(size_t(std::max<int64_t>(0, entries) * std::max<int64_t>(1, tupleSize)), -1);
    std::unordered_map<Value, int32_t, Hash> known;
    for (size_t i = 0; i < indices.size(); ++i)
        if (!values[i].isEmpty())
        {
            const auto [place, isNew] = known.try_emplace(values[i], int32_t(distinct.size()));
            if (isNew)
                distinct.push_back(values[i]);
            indices[i] = place->second;
        }
    return RQ_DataArrayHandle(new RQ_DAIndexedText(std::move(distinct), std::move(indices), tupleSize, type));
}

template <class Value> const char *RQ_DAIndexedText<Value>::className() const
{
    return std::same_as<Value, BAS_StringHolder> ? "RQ_DAIndexedString" : "RQ_DAIndexedDict";
}

template <class Value> int64_t RQ_DAIndexedText<Value>::getMemoryUsage() const
{
    return int64_t(sizeof(*this) + indices_.capacity() * sizeof(int32_t)) + this->memoryOf(distinct_);
}

template <class Value> const Value &RQ_DAIndexedText<Value>::valueAt(int64_t offset, int idx) const
{
    const size_t index = size_t(indexAt(offset, idx));
    return index < distinct_.size() ? distinct_[index] : this->none();
}

template <class Value> int64_t RQ_DAIndexedText<Value>::indexAt(int64_t offset, int idx) const
{
    return indices_[size_t(offset * this->getTupleSize() + idx)];
}

template class RQ_DAIndexedText<BAS_StringHolder>;
template class RQ_DAIndexedText<BAS_OptionsHolder>;

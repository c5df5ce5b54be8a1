#include <host/elm/ArrayTuple.h>

#include <algorithm>
#include <cstring>

#include <host/elm/detail/distinct.h>

template <class Value> struct ELM_ArrayTuple<Value>::Table : BAS_IntrusiveRefCounter<Table>
{
    std::vector<int64_t> ends{0};  // of each array in `values`; array 0 is the empty one
    std::vector<Value> values;
    host::Places places;
    host::TableBytes bytes;
};

namespace
{
// Numbers are the same when their bits are: the two zeros differ, and a NaN is itself.
template <class Value> constexpr bool kIsNumber = std::is_trivially_copyable_v<Value>;

template <class Value> uint64_t hashOf(std::span<const Value> values)
{
    if constexpr (kIsNumber<Value>)
        return host::hashBytes({reinterpret_cast<const char *>(values.data()), values.size_bytes()});
    else
    {
        uint64_t hash = values.size();
        for (const Value &value : values)
            hash = host::hashWord(hash, host::hashOf(value));
        return hash;
    }
}

template <class Value> bool areSame(std::span<const Value> a, std::span<const Value> b)
{
    if constexpr (kIsNumber<Value>)
        return a.size() == b.size() && std::memcmp(static_cast<const void *>(a.data()), b.data(), a.size_bytes()) == 0;
    else
        return std::ranges::equal(a, b);
}

template <class Value> int64_t bytesOf(std::span<const Value> values)
{
    int64_t bytes = int64_t(values.size_bytes());
    if constexpr (!kIsNumber<Value>)
        for (const Value &value : values)
            bytes += value.getMemoryUsage();
    return bytes;
}
}  // namespace

template <class Value>
ELM_ArrayTuple<Value>::ELM_ArrayTuple(int tupleSize, int64_t size)
    : ELM_IndexedRows(1, 0, size), tupleSize_(tupleSize), table_(new Table)
{}

template <class Value> ELM_ArrayTuple<Value>::~ELM_ArrayTuple() = default;
template <class Value> ELM_ArrayTuple<Value>::ELM_ArrayTuple(const ELM_ArrayTuple &) = default;
template <class Value> ELM_ArrayTuple<Value> &ELM_ArrayTuple<Value>::operator=(const ELM_ArrayTuple &) = default;

template <class Value> int64_t ELM_ArrayTuple<Value>::arrayCount() const { return int64_t(table_->ends.size()); }

template <class Value> std::span<const Value> ELM_ArrayTuple<Value>::array(int32_t place) const
{
    const int64_t begin = place > 0 ? table_->ends[size_t(place) - 1] : 0;
    return {table_->values.data() + begin, size_t(table_->ends[size_t(place)] - begin)};
}

template <class Value> int32_t ELM_ArrayTuple<Value>::add(std::span<const Value> values)
{
    if (values.size() % size_t(tupleSize_) != 0)
        return -1;
    if (values.empty())
        return 0;
    const uint64_t hash = hashOf(values);
    const int32_t known = table_->places.find(hash, [&](int32_t place) { return areSame(array(place), values); });
    if (known >= 0)
        return known;
    if (table_->use_count() > 1)
        table_ = new Table(*table_);
    const int32_t place = int32_t(table_->ends.size());
    const std::vector<Value> kept(values.begin(), values.end());  // which may lie in the table
    table_->values.insert(table_->values.end(), kept.begin(), kept.end());
    table_->ends.push_back(int64_t(table_->values.size()));
    table_->places.add(hash, place);
    table_->bytes.add(int64_t(sizeof(int64_t) + sizeof(void *) * 5) + bytesOf(std::span<const Value>(kept)));
    return place;
}

template <class Value> bool ELM_ArrayTuple<Value>::set(int64_t row, std::span<const Value> values)
{
    const int32_t place = add(values);
    if (place >= 0)
        *indices_.writableTuple(row) = place;
    return place >= 0;
}

template <class Value> int64_t ELM_ArrayTuple<Value>::memoryUsage() const
{
    return indices_.memoryUsage() + table_->bytes.get();
}

template class ELM_ArrayTuple<uint8_t>;
template class ELM_ArrayTuple<int8_t>;
template class ELM_ArrayTuple<int16_t>;
template class ELM_ArrayTuple<int32_t>;
template class ELM_ArrayTuple<int64_t>;
template class ELM_ArrayTuple<PLT_Half>;
template class ELM_ArrayTuple<float>;
template class ELM_ArrayTuple<double>;
template class ELM_ArrayTuple<BAS_StringHolder>;
template class ELM_ArrayTuple<BAS_OptionsHolder>;

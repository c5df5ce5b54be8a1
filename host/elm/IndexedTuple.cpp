#include <host/elm/IndexedTuple.h>

#include <host/elm/detail/distinct.h>

template <class Value> struct ELM_IndexedTuple<Value>::Table : BAS_IntrusiveRefCounter<Table>
{
    std::vector<Value> values;
    host::Places places;
    host::TableBytes bytes;
};

namespace
{
bool isSame(const BAS_StringHolder &value, std::string_view key) { return value.view() == key; }
bool isSame(const BAS_OptionsHolder &value, const BAS_OptionsHolder &key) { return value == key; }
}  // namespace

template <class Value>
ELM_IndexedTuple<Value>::ELM_IndexedTuple(int tupleSize, int64_t size)
    : ELM_IndexedRows(tupleSize, -1, size), table_(new Table)
{}

template <class Value> ELM_IndexedTuple<Value>::~ELM_IndexedTuple() = default;
template <class Value> ELM_IndexedTuple<Value>::ELM_IndexedTuple(const ELM_IndexedTuple &) = default;
template <class Value> ELM_IndexedTuple<Value> &ELM_IndexedTuple<Value>::operator=(const ELM_IndexedTuple &) = default;

template <class Value> const std::vector<Value> &ELM_IndexedTuple<Value>::table() const { return table_->values; }

template <class Value> const Value &ELM_IndexedTuple<Value>::get(int64_t row, int component) const
{
    static const Value none;
    const int32_t place = index(row, component);
    return place < 0 ? none : table_->values[size_t(place)];
}

template <class Value> int32_t ELM_IndexedTuple<Value>::find(Key value) const
{
    return table_->places.find(host::hashOf(value),
                               [&](int32_t place) { return isSame(table_->values[size_t(place)], value); });
}

template <class Value> int32_t ELM_IndexedTuple<Value>::add(Key value)
{
    const int32_t known = find(value);
    if (known >= 0)
        return known;
    if (table_->use_count() > 1)
        table_ = new Table(*table_);
    const int32_t place = int32_t(table_->values.size());
    table_->values.emplace_back(value);
    table_->places.add(host::hashOf(value), place);
    table_->bytes.add(int64_t(sizeof(Value) + sizeof(void *) * 5) + table_->values.back().getMemoryUsage());
    return place;
}

template <class Value> int64_t ELM_IndexedTuple<Value>::memoryUsage() const
{
    return indices_.memoryUsage() + table_->bytes.get();
}

template class ELM_IndexedTuple<BAS_StringHolder>;
template class ELM_IndexedTuple<BAS_OptionsHolder>;

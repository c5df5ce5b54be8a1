#include <host/elm/Attribute.h>

#include <atomic>

int64_t ELM_Attribute::nextDataId()
{
    // A thread takes many at a time: one counter for all would pass from processor to processor with every array.
    constexpr int64_t kTaken = 1024;
    static std::atomic<int64_t> next{1};
    thread_local int64_t mine = 0, end = 0;
    if (mine == end)
    {
        mine = next.fetch_add(kTaken, std::memory_order_relaxed);
        end = mine + kTaken;
    }
    return mine++;
}

ELM_Attribute::ELM_Attribute(ELM_Owner owner, ELM_Scope scope, const BAS_StringHolder &name, ELM_TypeInfo typeInfo,
                             Values values)
    : owner_(owner), scope_(scope), name_(name), typeInfo_(typeInfo), dataId_(nextDataId()), values_(std::move(values))
{}

namespace
{
bool canBe(ELM_Owner owner, int tupleSize, int64_t size)
{
    return owner >= ELM_OWNER_VERTEX && owner <= ELM_OWNER_DETAIL && tupleSize >= 1 && size >= 0;
}

// The rows of all kinds of values but numbers, which lie in their pages.
const ELM_IndexedRows &rowsOf(const ELM_IndexedRows &values) { return values; }
const ELM_IndexedRows &rowsOf(const ELM_NumericArrays &values) { return values.rows(); }
const ELM_NumericTuple &rowsOf(const ELM_NumericTuple &values) { return values; }
ELM_IndexedRows &rowsOf(ELM_IndexedRows &values) { return values; }
ELM_IndexedRows &rowsOf(ELM_NumericArrays &values) { return values.rows(); }
ELM_NumericTuple &rowsOf(ELM_NumericTuple &values) { return values; }
}  // namespace

ELM_AttributeHandle ELM_Attribute::create(ELM_Owner owner, ELM_Scope scope, const BAS_StringHolder &name,
                                          ELM_Storage storage, int tupleSize, ELM_TypeInfo typeInfo, int64_t size)
{
    if (!canBe(owner, tupleSize, size))
        return nullptr;
    if (ELMisNumeric(storage))
        return new ELM_Attribute(owner, scope, name, typeInfo, ELM_NumericTuple(storage, tupleSize, size));
    if (storage == ELM_STORAGE_STRING)
        return new ELM_Attribute(owner, scope, name, typeInfo, ELM_StringTuple(tupleSize, size));
    if (storage == ELM_STORAGE_DICTIONARY)
        return new ELM_Attribute(owner, scope, name, typeInfo, ELM_DictTuple(tupleSize, size));
    return nullptr;
}

ELM_AttributeHandle ELM_Attribute::createArrays(ELM_Owner owner, ELM_Scope scope, const BAS_StringHolder &name,
                                                ELM_Storage storage, int tupleSize, ELM_TypeInfo typeInfo, int64_t size)
{
    if (!canBe(owner, tupleSize, size))
        return nullptr;
    if (ELMisNumeric(storage))
        return new ELM_Attribute(owner, scope, name, typeInfo, ELM_NumericArrays(storage, tupleSize, size));
    if (storage == ELM_STORAGE_STRING)
        return new ELM_Attribute(owner, scope, name, typeInfo, ELM_StringArrays(tupleSize, size));
    if (storage == ELM_STORAGE_DICTIONARY)
        return new ELM_Attribute(owner, scope, name, typeInfo, ELM_DictArrays(tupleSize, size));
    return nullptr;
}

ELM_AttributeHandle ELM_Attribute::createDetached(ELM_Owner owner, ELM_Storage storage, int tupleSize, ELM_TypeInfo typeInfo,
                                                  int64_t size)
{
    return create(owner, ELM_SCOPE_PRIVATE, BAS_StringHolder(), storage, tupleSize, typeInfo, size);
}

ELM_Storage ELM_Attribute::storage() const
{
    if (numericTuple())
        return numericTuple()->storage();
    if (numericArrays())
        return numericArrays()->storage();
    return strings() || stringArrays() ? ELM_STORAGE_STRING : ELM_STORAGE_DICTIONARY;
}

int ELM_Attribute::tupleSize() const
{
    return std::visit([](const auto &values) { return values.tupleSize(); }, values_);
}

int64_t ELM_Attribute::size() const
{
    return std::visit([](const auto &values) { return rowsOf(values).size(); }, values_);
}

template <class Change> void ELM_Attribute::changeRows(Change change)
{
    std::visit([&](auto &values) { change(rowsOf(values)); }, values_);
}

void ELM_Attribute::resize(int64_t size)
{
    changeRows([=](auto &rows) { rows.resize(size); });
}

void ELM_Attribute::reset(int64_t first, int64_t count)
{
    changeRows([=](auto &rows) { rows.reset(first, count); });
}

void ELM_Attribute::rearrange(const ELM_OffsetList &order)
{
    changeRows([&](auto &rows) { rows.rearrange(order); });
}

void ELM_Attribute::reverse(int64_t first, int64_t count)
{
    changeRows([=](auto &rows) { rows.reverse(first, count); });
}

void ELM_Attribute::defragment()
{
    changeRows([](auto &rows) { rows.defragment(); });
}

int64_t ELM_Attribute::memoryUsage() const
{
    return int64_t(sizeof(*this)) + std::visit([](const auto &values) { return values.memoryUsage(); }, values_);
}

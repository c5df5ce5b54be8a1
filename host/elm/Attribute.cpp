#include <host/elm/Attribute.h>

#include <atomic>

int64_t ELM_Attribute::nextDataId()
{
    static std::atomic<int64_t> next{1};
    return next.fetch_add(1, std::memory_order_relaxed);
}

ELM_Attribute::ELM_Attribute(ELM_Owner owner, ELM_Scope scope, const BAS_StringHolder &name, ELM_TypeInfo typeInfo,
                             Values values)
    : owner_(owner), scope_(scope), name_(name), typeInfo_(typeInfo), dataId_(nextDataId()), values_(std::move(values))
{}

ELM_AttributeHandle ELM_Attribute::create(ELM_Owner owner, ELM_Scope scope, const BAS_StringHolder &name,
                                          ELM_Storage storage, int tupleSize, ELM_TypeInfo typeInfo, int64_t size)
{
    if (owner < ELM_OWNER_VERTEX || owner > ELM_OWNER_DETAIL || tupleSize < 1 || size < 0)
        return nullptr;
    if (ELMisNumeric(storage))
        return new ELM_Attribute(owner, scope, name, typeInfo, ELM_NumericTuple(storage, tupleSize, size));
    if (storage == ELM_STORAGE_STRING)
        return new ELM_Attribute(owner, scope, name, typeInfo, ELM_StringTuple(tupleSize, size));
    return nullptr;
}

ELM_AttributeHandle ELM_Attribute::createDetached(ELM_Owner owner, ELM_Storage storage, int tupleSize, ELM_TypeInfo typeInfo,
                                                  int64_t size)
{
    return create(owner, ELM_SCOPE_PRIVATE, BAS_StringHolder(), storage, tupleSize, typeInfo, size);
}

ELM_Storage ELM_Attribute::storage() const { return numericTuple() ? numericTuple()->storage() : ELM_STORAGE_STRING; }

int ELM_Attribute::tupleSize() const
{
    return std::visit([](const auto &values) { return values.tupleSize(); }, values_);
}

int64_t ELM_Attribute::size() const
{
    return std::visit([](const auto &values) { return values.size(); }, values_);
}

void ELM_Attribute::resize(int64_t size)
{
    std::visit([size](auto &values) { values.resize(size); }, values_);
}

void ELM_Attribute::reset(int64_t first, int64_t count)
{
    std::visit([&](auto &values) { values.reset(first, count); }, values_);
}

void ELM_Attribute::rearrange(const ELM_OffsetList &rows)
{
    std::visit([&](auto &values) { values.rearrange(rows); }, values_);
}

void ELM_Attribute::reverse(int64_t first, int64_t count)
{
    std::visit([&](auto &values) { values.reverse(first, count); }, values_);
}

void ELM_Attribute::defragment()
{
    std::visit([](auto &values) { values.defragment(); }, values_);
}

int64_t ELM_Attribute::memoryUsage() const
{
    return int64_t(sizeof(*this)) + std::visit([](const auto &values) { return values.memoryUsage(); }, values_);
}

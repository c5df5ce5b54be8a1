#include <host/elm/NumericTuple.h>

ELM_NumericTuple::ELM_NumericTuple(ELM_Storage storage, int tupleSize, int64_t size)
{
    switch (storage)
    {
    case ELM_STORAGE_INT8:
        pages_ = ELM_PageArray<int8_t>(tupleSize);
        break;
    case ELM_STORAGE_INT16:
        pages_ = ELM_PageArray<int16_t>(tupleSize);
        break;
    case ELM_STORAGE_INT32:
        pages_ = ELM_PageArray<int32_t>(tupleSize);
        break;
    case ELM_STORAGE_INT64:
        pages_ = ELM_PageArray<int64_t>(tupleSize);
        break;
    case ELM_STORAGE_REAL16:
        pages_ = ELM_PageArray<PLT_Half>(tupleSize);
        break;
    case ELM_STORAGE_REAL32:
        pages_ = ELM_PageArray<float>(tupleSize);
        break;
    case ELM_STORAGE_REAL64:
        pages_ = ELM_PageArray<double>(tupleSize);
        break;
    default:
        pages_ = ELM_PageArray<uint8_t>(tupleSize);
        break;
    }
    resize(size);
}

int ELM_NumericTuple::tupleSize() const
{
    return visit([](const auto &pages) { return pages.tupleSize(); });
}

int64_t ELM_NumericTuple::size() const
{
    return visit([](const auto &pages) { return pages.size(); });
}

const void *ELM_NumericTuple::contiguousData() const
{
    return visit([](const auto &pages) { return static_cast<const void *>(pages.contiguous()); });
}

void ELM_NumericTuple::resize(int64_t size)
{
    visit([size](auto &pages) { pages.resize(size); });
}

void ELM_NumericTuple::reset(int64_t first, int64_t count)
{
    visit([&](auto &pages) { pages.reset(first, count); });
}

void ELM_NumericTuple::rearrange(const ELM_OffsetList &rows)
{
    visit([&](auto &pages) { pages.rearrange(rows); });
}

void ELM_NumericTuple::reverse(int64_t first, int64_t count)
{
    visit([&](auto &pages) { pages.reverse(first, count); });
}

void ELM_NumericTuple::defragment()
{
    visit([](auto &pages) { pages.defragment(); });
}

int64_t ELM_NumericTuple::memoryUsage() const
{
    return visit([](const auto &pages) { return pages.memoryUsage(); });
}

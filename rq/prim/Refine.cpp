#include <rq/prim/Refine.h>

#include <host/bas/MemoryTracker.h>

RQ_Refine::~RQ_Refine() = default;

bool RQ_Refine::allowThreading() const { return true; }

void *RQ_Refine::operator new(size_t bytes)
{
    void *sink = ::operator new(bytes);
    BAS_MemoryTracker::add(BAS_MEMORY_PRIMITIVE, int64_t(bytes));
    return sink;
}

void *RQ_Refine::operator new(size_t bytes, std::align_val_t alignment)
{
    void *sink = ::operator new(bytes, alignment);
    BAS_MemoryTracker::add(BAS_MEMORY_PRIMITIVE, int64_t(bytes));
    return sink;
}

void RQ_Refine::operator delete(void *sink, size_t bytes)
{
    BAS_MemoryTracker::add(BAS_MEMORY_PRIMITIVE, -int64_t(bytes));
    ::operator delete(sink, bytes);
}

void RQ_Refine::operator delete(void *sink, size_t bytes, std::align_val_t alignment)
{
    BAS_MemoryTracker::add(BAS_MEMORY_PRIMITIVE, -int64_t(bytes));
    ::operator delete(sink, bytes, alignment);
}

#pragma once

#include <cstddef>
#include <new>

#include <host/bas/Intrusive.h>
#include <rq/api.h>
#include <rq/fwd.h>

using RQ_PrimitiveHandle = BAS_IntrusivePtr<RQ_Primitive>;

/// Receive the primitives that a refinement makes.
///
/// A producer asks `allowThreading` once before it starts.  With true it may call `addPrimitive` from several workers at
/// once and in any order, with false only from its calling thread and in its own order.  Every primitive is handed over
/// exactly once; a sink that keeps one keeps a handle.
class RQ_API RQ_Refine
{
public:
    RQ_Refine() = default;
    RQ_Refine(const RQ_Refine &) {}
    RQ_Refine &operator=(const RQ_Refine &) { return *this; }
    virtual ~RQ_Refine();

    virtual bool allowThreading() const;
    virtual void addPrimitive(const RQ_PrimitiveHandle &primitive) = 0;

    // Sinks on the heap count as primitive memory.
    static void *operator new(size_t bytes);
    static void *operator new(size_t bytes, std::align_val_t alignment);
    static void *operator new(size_t, void *place) noexcept { return place; }
    static void operator delete(void *sink, size_t bytes);
    static void operator delete(void *sink, size_t bytes, std::align_val_t alignment);
    static void operator delete(void *, void *) noexcept {}
};

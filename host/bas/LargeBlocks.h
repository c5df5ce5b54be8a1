#pragma once

#include <memory>
#include <new>

#include <host/plt/types.h>

/// The allocator of large value blocks: arrays, pages, temporary buffers.
///
/// A fresh page costs more than the work on it, so freed blocks are kept and given out again.
///
/// Shape    below 64 KiB the heap's; up to 2 MiB recycled blocks in power-of-two classes, page aligned; from 2 MiB up 2 MiB
///          aligned with advice for huge pages.  Every block is at least 64-byte aligned.
/// Failure  null when memory is exhausted
/// Threads  safe from any thread
class HOST_API BAS_LargeBlocks
{
public:
    static void *allocate(size_t bytes);

    /// Give back a block; `bytes` as asked for.  Null is ignored.
    static void release(void *block, size_t bytes);

    /// Return pooled blocks to the system until at most `keepBytes` remain.
    static void trim(size_t keepBytes = 0);

    /// Bytes that wait in the pool.
    static size_t pooled();
};

/// The allocator as the standard library wants it; values stay unset until written.
template <class T> class BAS_BlockAllocator
{
public:
    using value_type = T;

    BAS_BlockAllocator() = default;
    template <class U> BAS_BlockAllocator(const BAS_BlockAllocator<U> &) {}

    T *allocate(size_t count)
    {
        if (count > size_t(-1) / sizeof(T))
            throw std::bad_alloc();
        void *block = BAS_LargeBlocks::allocate(count * sizeof(T));
        if (!block)
            throw std::bad_alloc();
        return static_cast<T *>(block);
    }
    void deallocate(T *block, size_t count) { BAS_LargeBlocks::release(block, count * sizeof(T)); }

    template <class U, class... Arguments> void construct(U *place, Arguments &&...arguments)
    {
        if constexpr (sizeof...(Arguments) == 0)
            ::new (static_cast<void *>(place)) U;
        else
            ::new (static_cast<void *>(place)) U(static_cast<Arguments &&>(arguments)...);
    }

    template <class U> bool operator==(const BAS_BlockAllocator<U> &) const { return true; }
};

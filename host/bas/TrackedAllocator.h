#pragma once

#include <memory>

#include <host/bas/MemoryTracker.h>

/// The standard allocator, with its memory counted under a category of `BAS_MemoryTracker`.
template <class T, BAS_MemoryCategory kCategory> class BAS_TrackedAllocator
{
public:
    using value_type = T;
    template <class U> struct rebind
    {
        using other = BAS_TrackedAllocator<U, kCategory>;
    };

    BAS_TrackedAllocator() = default;
    template <class U> BAS_TrackedAllocator(const BAS_TrackedAllocator<U, kCategory> &) {}

    T *allocate(size_t count)
    {
        T *memory = std::allocator<T>().allocate(count);
        BAS_MemoryTracker::add(kCategory, int64_t(count * sizeof(T)));
        return memory;
    }
    void deallocate(T *memory, size_t count)
    {
        BAS_MemoryTracker::add(kCategory, -int64_t(count * sizeof(T)));
        std::allocator<T>().deallocate(memory, count);
    }

    template <class U> bool operator==(const BAS_TrackedAllocator<U, kCategory> &) const { return true; }
};

#pragma once

#include <cstddef>

#include <host/plt/types.h>

/// The heap of small objects that are made by the million and on many threads.
///
/// Threads keep the blocks that they free, at most 128 KiB each, and pass on what is more to all others.
///
/// Shape      up to 64 bytes a cache line of its own; above that the global heap's
/// Failure    throws `std::bad_alloc` when memory is exhausted, as every `new`
/// Ownership  a block may be freed on any thread, after the end of the one that took it, and by destructors of statics.
///            Memory in which no block is left goes to `BAS_LargeBlocks`, 2 MiB at a time; what waits for others counts as
///            `BAS_MEMORY_POOL`, what is in use or kept by a thread does not count
/// Threads    safe from any thread
class HOST_API BAS_SmallBlocks
{
public:
    static constexpr size_t kBytes = 64;

    static void *allocate(size_t bytes);

    /// Give back a block; `bytes` as asked for.  Null is ignored.
    static void release(void *block, size_t bytes) noexcept;
};

/// The base of classes whose objects lie in small blocks when they are made with `new`.
class HOST_API BAS_SmallObject
{
public:
    static void *operator new(size_t bytes) { return BAS_SmallBlocks::allocate(bytes); }
    static void *operator new(size_t, void *place) noexcept { return place; }
    static void operator delete(void *object, size_t bytes) noexcept;  // GCC 12 warns without reason where it is inline
    static void operator delete(void *, void *) noexcept {}
};

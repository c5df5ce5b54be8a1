#pragma once

#include <array>

#include <host/plt/types.h>

/// What tracked memory is used for.
enum BAS_MemoryCategory
{
    BAS_MEMORY_ARRAY,
    BAS_MEMORY_LIST,
    BAS_MEMORY_MAP,
    BAS_MEMORY_PRIMITIVE,
    BAS_MEMORY_TRANSFORM,
    BAS_MEMORY_HOST_PAGE,
    BAS_MEMORY_HOST_TABLE,
    BAS_MEMORY_POOL,
    BAS_MEMORY_CATEGORIES
};

/// Bytes in use, by category, for the whole process.
///
/// Threads  safe from any thread; a peak may miss the last 64 KiB of a few threads
class HOST_API BAS_MemoryTracker
{
public:
    /// Account `bytes` (negative to give back).
    static void add(BAS_MemoryCategory category, int64_t bytes);

    static int64_t current(BAS_MemoryCategory category);
    static int64_t peak(BAS_MemoryCategory category);
    static const char *name(BAS_MemoryCategory category);
};

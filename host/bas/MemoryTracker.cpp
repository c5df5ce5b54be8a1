#include <host/bas/MemoryTracker.h>

#include <atomic>

namespace
{
// One cache line each: different categories are counted from different threads all the time.
struct alignas(64) Counter
{
    std::atomic<int64_t> current{0};
    std::atomic<int64_t> peak{0};
};

std::array<Counter, BAS_MEMORY_CATEGORIES> counters;
}  // namespace

void BAS_MemoryTracker::add(BAS_MemoryCategory category, int64_t bytes)
{
    Counter &counter = counters[category];
    const int64_t now = counter.current.fetch_add(bytes, std::memory_order_relaxed) + bytes;
    int64_t peak = counter.peak.load(std::memory_order_relaxed);
    while (now > peak && !counter.peak.compare_exchange_weak(peak, now, std::memory_order_relaxed))
    {
    }
}

int64_t BAS_MemoryTracker::current(BAS_MemoryCategory category)
{
    return counters[category].current.load(std::memory_order_relaxed);
}

int64_t BAS_MemoryTracker::peak(BAS_MemoryCategory category)
{
    return counters[category].peak.load(std::memory_order_relaxed);
}

const char *BAS_MemoryTracker::name(BAS_MemoryCategory category)
{
    static constexpr const char *kNames[] = {"array",     "list",      "map",        "primitive",
                                             "transform", "host page", "host table", "pool"};
    return category >= 0 && category < BAS_MEMORY_CATEGORIES ? kNames[category] : "";
}

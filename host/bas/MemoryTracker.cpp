#include <host/bas/MemoryTracker.h>

#include <algorithm>
#include <atomic>

namespace
{
// Threads that count in one place wait for each other's cache lines at every object they make.
constexpr unsigned kPlaces = 16;

// What a place may grow by before the peak is looked at.
constexpr int64_t kUnseenBytes = int64_t(64) << 10;

struct alignas(64) Place
{
    std::atomic<int64_t> current{0};
    std::atomic<int64_t> unseen{0};
};

struct Counter
{
    std::array<Place, kPlaces> places;
    alignas(64) std::atomic<int64_t> peak{0};

    int64_t current() const
    {
        int64_t sum = 0;
        for (const Place &place : places)
            sum += place.current.load(std::memory_order_relaxed);
        return sum;
    }

    void raisePeak()
    {
        const int64_t now = current();
        int64_t known = peak.load(std::memory_order_relaxed);
        while (now > known && !peak.compare_exchange_weak(known, now, std::memory_order_relaxed))
        {}
    }
};

std::array<Counter, BAS_MEMORY_CATEGORIES> counters;

unsigned placeOfThread()
{
    static std::atomic<unsigned> next{0};
    thread_local const unsigned place = next.fetch_add(1, std::memory_order_relaxed) % kPlaces;
    return place;
}
}  // namespace

void BAS_MemoryTracker::add(BAS_MemoryCategory category, int64_t bytes)
{
    Counter &counter = counters[category];
    Place &place = counter.places[placeOfThread()];
    place.current.fetch_add(bytes, std::memory_order_relaxed);
    if (bytes <= 0)
        return;
    // Threads that share a place may lose some of what is unseen: it is no more than a reason to look.
    const int64_t unseen = place.unseen.load(std::memory_order_relaxed) + bytes;
    place.unseen.store(unseen < kUnseenBytes ? unseen : 0, std::memory_order_relaxed);
    if (unseen >= kUnseenBytes)
        counter.raisePeak();
}

int64_t BAS_MemoryTracker::current(BAS_MemoryCategory category) { return counters[category].current(); }

int64_t BAS_MemoryTracker::peak(BAS_MemoryCategory category)
{
    counters[category].raisePeak();
    return counters[category].peak.load(std::memory_order_relaxed);
}

const char *BAS_MemoryTracker::name(BAS_MemoryCategory category)
{
    static constexpr const char *kNames[] = {"array",     "list",      "map",        "primitive",
                                             "transform", "host page", "host table", "pool"};
    return category >= 0 && category < BAS_MEMORY_CATEGORIES ? kNames[category] : "";
}

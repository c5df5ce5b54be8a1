#include <host/bas/CopyCounter.h>

#include <atomic>

namespace
{
std::array<std::atomic<int64_t>, BAS_COPY_CAUSES> counters{};
}

void BAS_CopyCounter::add(BAS_CopyCause cause, int64_t bytes)
{
    counters[cause].fetch_add(bytes, std::memory_order_relaxed);
}

BAS_CopyCounter::Totals BAS_CopyCounter::totals()
{
    Totals totals;
    for (int cause = 0; cause < BAS_COPY_CAUSES; ++cause)
        totals[cause] = counters[cause].load(std::memory_order_relaxed);
    return totals;
}

const char *BAS_CopyCounter::name(BAS_CopyCause cause)
{
    static constexpr const char *kNames[] = {"convert", "gather", "harden"};
    return cause >= 0 && cause < BAS_COPY_CAUSES ? kNames[cause] : "";
}

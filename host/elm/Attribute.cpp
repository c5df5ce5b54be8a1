#include <host/elm/Attribute.h>

#include <atomic>

int64_t ELM_Attribute::nextDataId()
{
    static std::atomic<int64_t> next{1};
    return next.fetch_add(1, std::memory_order_relaxed);
}

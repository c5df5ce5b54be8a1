#include <host/bas/Progress.h>

namespace
{
std::atomic<BAS_ProgressHandler *> handler{nullptr};
}

BAS_ProgressHandler *BAS_ProgressHandler::install(BAS_ProgressHandler *newHandler)
{
    return handler.exchange(newHandler, std::memory_order_acq_rel);
}

BAS_Progress::BAS_Progress(const char *label) : label_(label) {}

bool BAS_Progress::interrupted(double fraction)
{
    if (!label_)
        return false;
    if (stopped_.load(std::memory_order_relaxed))
        return true;
    BAS_ProgressHandler *const listener = handler.load(std::memory_order_acquire);
    if (!listener || !listener->update(label_, fraction))
        return false;
    stopped_.store(true, std::memory_order_relaxed);
    return true;
}

#include <apps/viewport/SessionProgress.h>

namespace rq::viewport
{
bool SessionProgress::update(const char *label, double fraction)
{
    if (std::this_thread::get_id() == owner_)
        return false;
    // Workers do not wait for each other just to tell how far they are.
    if (const std::unique_lock lock(mutex_, std::try_to_lock); lock)
    {
        step_.fraction = fraction;
        if (step_.label != label)
            step_.label = label;
    }
    return cancelled.load(std::memory_order_relaxed);
}

void SessionProgress::begin(const char *label)
{
    const std::lock_guard lock(mutex_);
    step_ = {label, 0.0};
}

SessionProgress::Step SessionProgress::step() const
{
    const std::lock_guard lock(mutex_);
    return step_;
}
}  // namespace rq::viewport

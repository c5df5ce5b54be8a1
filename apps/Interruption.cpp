#include <apps/Interruption.h>

#include <atomic>
#include <csignal>

namespace rq::app
{
namespace
{
// Set by the handler, read by every thread.
std::atomic<bool> asked = false;
static_assert(std::atomic<bool>::is_always_lock_free);

void ask(int)
{
    asked = true;
    std::signal(SIGINT, SIG_DFL);
}
}  // namespace

Interruption::Interruption() : before_(install(this))
{
    asked = false;
    // Who was started with the signal ignored, as nohup does, goes on to ignore it.
    if (std::signal(SIGINT, ask) == SIG_IGN)
        std::signal(SIGINT, SIG_IGN);
}

Interruption::~Interruption()
{
    if (std::signal(SIGINT, SIG_DFL) == SIG_IGN)
        std::signal(SIGINT, SIG_IGN);
    install(before_);
}

bool Interruption::update(const char *label, double fraction)
{
    const bool stopped = before_ && before_->update(label, fraction);
    return stopped || isAsked();
}

bool Interruption::isAsked() const { return asked; }
}  // namespace rq::app

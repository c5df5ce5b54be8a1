#include <apps/Interruption.h>

#include <csignal>

namespace rq::app
{
namespace
{
volatile std::sig_atomic_t asked = 0;

void ask(int)
{
    asked = 1;
    std::signal(SIGINT, SIG_DFL);
}
}  // namespace

Interruption::Interruption() : before_(install(this))
{
    asked = 0;
    std::signal(SIGINT, ask);
}

Interruption::~Interruption()
{
    std::signal(SIGINT, SIG_DFL);
    install(before_);
}

bool Interruption::update(const char *label, double fraction)
{
    const bool stopped = before_ && before_->update(label, fraction);
    return stopped || isAsked();
}

bool Interruption::isAsked() const { return asked != 0; }
}  // namespace rq::app

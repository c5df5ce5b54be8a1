#include <apps/TerminalProgress.h>

#include <cstdio>

#include <unistd.h>

namespace rq::app
{
TerminalProgress::TerminalProgress() : installed_(isatty(STDERR_FILENO) != 0)
{
    if (installed_)
        before_ = install(this);
}

TerminalProgress::~TerminalProgress()
{
    if (!installed_)
        return;
    install(before_);
    if (shownPercent_ >= 0)
        std::fputs("\r\033[K", stderr);
}

bool TerminalProgress::update(const char *label, double fraction)
{
    constexpr std::chrono::milliseconds kPatience(500);
    const int percent = int(fraction * 100.0);
    if (Clock::now() - start_ < kPatience || shownPercent_.exchange(percent) == percent)
        return false;
    std::fprintf(stderr, "\r%s %d %%\033[K", label, percent);
    return false;
}
}  // namespace rq::app

#pragma once

#include <atomic>
#include <chrono>

#include <host/bas/Progress.h>

namespace rq::app
{
/// Shows how far long work is, as long as the object lives: one line on standard error, rewritten in place.
///
/// Nothing is shown when standard error is no terminal, nor in the first half second.
class TerminalProgress : public BAS_ProgressHandler
{
public:
    TerminalProgress();
    ~TerminalProgress() override;
    TerminalProgress(const TerminalProgress &) = delete;
    TerminalProgress &operator=(const TerminalProgress &) = delete;

    bool update(const char *label, double fraction) override;

private:
    using Clock = std::chrono::steady_clock;

    BAS_ProgressHandler *before_ = nullptr;
    Clock::time_point start_ = Clock::now();
    std::atomic<int> shownPercent_{-1};
    bool installed_ = false;
};
}  // namespace rq::app

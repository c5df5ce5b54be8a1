#pragma once

#include <mutex>
#include <string>
#include <thread>

#include <host/bas/Progress.h>

namespace rq::viewport
{
/// How far the work of other threads than the one that made this object is, and the way to stop it.  What its own thread
/// does meanwhile is neither shown nor stopped.
class SessionProgress final : public BAS_ProgressHandler
{
public:
    SessionProgress() : before_(install(this)) {}
    ~SessionProgress() override { install(before_); }
    SessionProgress(const SessionProgress &) = delete;
    SessionProgress &operator=(const SessionProgress &) = delete;

    bool update(const char *label, double fraction) override;

    struct Step
    {
        std::string label;
        double fraction = 0.0;
    };
    Step step() const;

    void begin(const char *label);

    std::atomic<bool> cancelled{false};

private:
    const std::thread::id owner_ = std::this_thread::get_id();
    BAS_ProgressHandler *const before_;
    mutable std::mutex mutex_;
    Step step_;
};
}  // namespace rq::viewport

#pragma once

#include <atomic>

#include <host/plt/types.h>

/// What an application installs to hear of long operations and to stop them.
class HOST_API BAS_ProgressHandler
{
public:
    virtual ~BAS_ProgressHandler() = default;

    /// Called from worker threads too.  `fraction` runs from 0 to 1; return true to interrupt the operation.
    virtual bool update(const char *label, double fraction) = 0;

    /// Install the handler of the process (null: none) and return the one before.  The caller keeps it alive.
    static BAS_ProgressHandler *install(BAS_ProgressHandler *handler);
};

/// One long operation.  An interruption is sticky: once asked for, every later poll answers true.
///
/// Threads  `interrupted` may be polled from any thread
/// Cost     a relaxed load without a handler; poll every thousand elements or so
class HOST_API BAS_Progress
{
public:
    explicit BAS_Progress(const char *label);  ///< null: an operation that nobody hears of and nothing stops

    /// Report how far the operation is; true when it is to stop.
    bool interrupted(double fraction);

    /// Whether some poll was told to stop; asks nobody.
    bool isInterrupted() const { return stopped_.load(std::memory_order_relaxed); }

private:
    const char *label_;
    std::atomic<bool> stopped_{false};
};

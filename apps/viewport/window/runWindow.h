#pragma once

#include <string>
#include <vector>

#include <apps/viewport/window/WindowOptions.h>

namespace rq::viewport
{
/// What became of a window that was closed.
struct WindowOutcome
{
    std::string error;      ///< why no window could be opened; empty when one was
    std::string complaint;  ///< what was wrong with the files when it was closed without ever showing one
};

/// Show files in a window until it is closed.  Threads: the program's first.
WindowOutcome runWindow(const WindowOptions &options);
}  // namespace rq::viewport

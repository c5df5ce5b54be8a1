#pragma once

#include <string>

#include <apps/CommonOptions.h>
#include <apps/ExitCode.h>

namespace rq::app
{
/// What `rq render` is told.
struct RenderOptions
{
    std::string file;
    std::string output;
    std::string size = "960x540";
    int samples = 16;
    bool ground = true;
};

/// Refine a file and write a picture of it.
ExitCode runRender(const CommonOptions &common, const RenderOptions &options);
}  // namespace rq::app

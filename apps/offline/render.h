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
    std::string output;            ///< the PNG to write
    std::string size = "960x540";  ///< width x height in pixels
    int samples = 16;
    bool ground = true;
    std::string up = "auto";  ///< "y", "z" or "auto"
};

/// Refine a file and write a picture of it, the same bytes for any number of threads.
ExitCode runRender(const CommonOptions &common, const RenderOptions &options);
}  // namespace rq::app

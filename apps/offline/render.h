#pragma once

#include <optional>
#include <string>
#include <vector>

#include <apps/CommonOptions.h>
#include <apps/ExitCode.h>

namespace CLI
{
class App;
}

namespace rq::app
{
/// What `rq render` is told.
struct RenderOptions
{
    std::string file;
    std::string output;            ///< the PNG or EXR file to write
    std::string size = "960x540";  ///< width x height in pixels
    int samples = 16;
    double adaptive = 0.0;
    bool ground = true;
    std::string up = "auto";  ///< "y", "z" or "auto"
    std::string shade = "beauty";

    std::optional<double> azimuth, elevation, fov;  ///< of the camera, in degrees
    std::vector<double> eye, look;                  ///< three coordinates each, or none

    std::vector<std::string> next;  ///< files of the same scene, later on
    int motion = 1;                 ///< segments that the velocity of points is followed for
    std::string shutter = "0:1";

    std::string compare;  ///< a PNG that the picture is to look like
    double tolerance = 0.02;
};

/// Tell the command line what there is to tell, but for the file.
void addRenderOptions(CLI::App &command, RenderOptions &options);

/// Refine a file and write a picture of it, the same bytes for any number of threads.
ExitCode runRender(const CommonOptions &common, const RenderOptions &options);
}  // namespace rq::app

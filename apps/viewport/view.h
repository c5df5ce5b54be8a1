#pragma once

#include <string>
#include <vector>

#include <apps/CommonOptions.h>
#include <apps/ExitCode.h>
#include <apps/viewport/DrawStyle.h>

namespace CLI
{
class App;
}

namespace rq::app
{
struct ViewOptions
{
    std::vector<std::string> files;  ///< shown together; in a window, also sequences
    std::string screenshot;          ///< PNG file; a window is opened when it is empty
    std::string size;                ///< empty for one that suits a picture or a window
    std::string up = "auto";         ///< "auto", "y" or "z"
    std::string shading = "auto";    ///< "auto", "smooth", "cusp" or "flat"
    double cuspAngle = 60.0;         ///< degrees
    std::string colour;              ///< attribute, as [OWNER:]NAME[.COMPONENT]; empty for the own colours
    std::string map = "spectrum";
    std::vector<double> range;  ///< least and greatest value of the map; empty for those of the attribute
    double azimuth = 33.0;      ///< degrees
    double elevation = 21.0;
    double zoom = 1.0;
    bool wire = false;
    bool noFaces = false;
    bool points = false;
    bool normals = false;
    bool noTint = false;
    bool statistics = false;  ///< tell on standard error what was uploaded
};

/// The options of `rq view` beyond those of every command, into `options`.
void addViewOptions(CLI::App &command, ViewOptions &options);

/// Show files: in a picture where one is asked for, else in a window.
ExitCode runView(const CommonOptions &common, const ViewOptions &options);

/// What the options say of style and preparation.  False with the reason in `error`.
bool readStyle(const ViewOptions &options, viewport::DrawStyle &style, viewport::Preparation &preparation,
               std::string &error);
}  // namespace rq::app

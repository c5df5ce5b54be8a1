#pragma once

#include <optional>
#include <string>
#include <vector>

#include <apps/viewport/DrawStyle.h>
#include <apps/viewport/OrbitCamera.h>
#include <apps/viewport/SceneLoader.h>

namespace rq::viewport
{
/// What a window begins with.
struct WindowOptions
{
    std::vector<std::string> files;  ///< or sequences; none opens an empty window
    RQ_RefineParms parms;
    Preparation preparation;
    PrimitiveChange change;  ///< of what is shown
    DrawStyle style;
    OrbitCamera camera;        ///< of which the angles count: what it frames follows from the files
    std::optional<UpAxis> up;  ///< none: the likely one
    double zoom = 1.0;         ///< how much closer than where all of the first files is seen
    int width = 1280;
    int height = 800;
    std::string pictureFolder = ".";  ///< where pictures of the view are written
};
}  // namespace rq::viewport

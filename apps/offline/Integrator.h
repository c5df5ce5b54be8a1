#pragma once

#include <apps/offline/Camera.h>
#include <apps/offline/Image.h>
#include <apps/offline/Scene.h>

namespace rq::offline
{
struct Settings
{
    int width = 960;
    int height = 540;
    int samples = 16;    ///< camera rays a pixel; each asks for the sun once and for the sky twice
    bool ground = true;  ///< a floor under the object that catches its shadow
};

/// Light the scene with a sun and a sky and look at it through the camera.  Null when the user interrupted.
///
/// Threads  runs in parallel over tiles; the random numbers of a pixel depend on its place alone, so the picture has the
///          same bits for any number of threads
std::unique_ptr<Image> render(const Scene &scene, const Camera &camera, const Settings &settings);
}  // namespace rq::offline

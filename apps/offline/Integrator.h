#pragma once

#include <apps/offline/Camera.h>
#include <apps/offline/Image.h>
#include <apps/offline/Scene.h>

namespace offline
{
struct Settings
{
    int width = 960;
    int height = 540;
    int samples = 16;   ///< rays a pixel, each with one ray to the sun and one to the sky
    bool ground = true;  ///< a floor under the object that catches its shadow
};

/// Light the scene with a sun and a sky and look at it through the camera.
///
/// Threads  runs in parallel over tiles; every pixel draws its own random numbers, so the picture does not depend on the
///          number of threads
Image render(const Scene &scene, const Camera &camera, const Settings &settings);
}  // namespace offline

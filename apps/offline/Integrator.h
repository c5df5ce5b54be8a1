#pragma once

#include <memory>

#include <apps/offline/Camera.h>
#include <apps/offline/Film.h>
#include <apps/offline/Scene.h>

namespace rq::offline
{
struct Settings
{
    int width = 960;
    int height = 540;
    int samples = 16;          ///< paths a pixel, at most so many if `noise` is positive
    float noise = 0.0f;        ///< how far, of 1 for white, a pixel may be off when no more paths are spent on it; 0: never
    bool ground = true;        ///< a floor under the object that catches its shadow
    float shutterOpen = 0.0f;  ///< the part of the motion that is seen: 0 is the first segment, 1 the last
    float shutterClose = 1.0f;
};

/// Light the scene with a sun and a sky and look at it through the camera, by paths of up to four bounces.  Null when the
/// user interrupted.
///
/// Threads  runs in parallel over tiles; the random numbers of a pixel depend on its place alone, so the picture has the
///          same bits for any number of threads
std::unique_ptr<Film> render(const Scene &scene, const Camera &camera, const Settings &settings);
}  // namespace rq::offline

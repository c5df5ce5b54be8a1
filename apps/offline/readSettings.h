#pragma once

#include <string>

#include <apps/offline/Integrator.h>
#include <apps/offline/render.h>

namespace rq::app
{
/// What the options of `rq render` mean to the renderer.  False with the reason in `error` when one has no meaning.
bool readSettings(const RenderOptions &options, offline::Settings &settings, std::string &error);
bool readLook(const RenderOptions &options, offline::Look &look, std::string &error);

/// What the options say of the camera, and behind that what the detail attribute "camera" of the primitives says: a
/// dictionary with some of "eye", "look" (three numbers each), "azimuth", "elevation" and "fov" (degrees).
offline::View viewOf(const RenderOptions &options);
offline::View viewOf(const RQ_Primitive &primitive);
}  // namespace rq::app

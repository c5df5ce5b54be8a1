#pragma once

#include <apps/Picture.h>
#include <apps/viewport/Display.h>

namespace rq::viewport
{
using app::Picture;

/// Read the framebuffer that is bound for reading, from its lower left corner.
Picture readPicture(int width, int height);

/// Put the colour map and the ends of its range into the lower left corner, where there is room.
void drawLegend(Picture &picture, const Legend &legend);
}  // namespace rq::viewport

#pragma once

#include <string>

namespace rq::viewport
{
struct Legend;

/// Write the lower left corner of the current framebuffer, with the legend, as a PNG file that does not exist yet,
/// "rq-view-1.png" and so on, and say what was done.
std::string writePicture(const std::string &folder, int width, int height, const Legend &legend);
}  // namespace rq::viewport

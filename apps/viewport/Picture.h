#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <apps/viewport/Display.h>

namespace rq::viewport
{
/// 8-bit sRGB pixels, three bytes each, row by row from the top.
struct Picture
{
    int width = 0;
    int height = 0;
    std::vector<uint8_t> pixels;

    uint8_t *at(int x, int y) { return &pixels[3 * (size_t(y) * size_t(width) + size_t(x))]; }
    const uint8_t *at(int x, int y) const { return &pixels[3 * (size_t(y) * size_t(width) + size_t(x))]; }
};

/// Read the framebuffer that is bound for reading, from its lower left corner.
Picture readPicture(int width, int height);

/// False with the reason in `error`; no file is left behind then.
bool writePNG(const std::string &path, const Picture &picture, std::string &error);

/// Put the colour map and the ends of its range into the lower left corner, where there is room.
void drawLegend(Picture &picture, const Legend &legend);
}  // namespace rq::viewport

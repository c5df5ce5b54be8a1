#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace rq::app
{
/// A picture as screens show it: 8-bit sRGB values, red, green and blue of each pixel, row by row from the top.
struct Picture
{
    int width = 0;
    int height = 0;
    std::vector<uint8_t> pixels;

    uint8_t *at(int x, int y) { return &pixels[3 * (size_t(y) * size_t(width) + size_t(x))]; }
    const uint8_t *at(int x, int y) const { return &pixels[3 * (size_t(y) * size_t(width) + size_t(x))]; }
};

/// A picture as the bytes of a PNG file; none with the reason in `error` when that fails.
std::string encodePNG(const Picture &picture, std::string &error);

/// Write a PNG file, as `io::writeFile` does.  False with the reason in `error`.
bool writePNG(const std::string &path, const Picture &picture, std::string &error);

/// Read a PNG file.  False with the reason in `error`.
bool readPNG(const std::string &path, Picture &picture, std::string &error);
}  // namespace rq::app

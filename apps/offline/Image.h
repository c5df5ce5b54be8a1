#pragma once

#include <string>
#include <vector>

#include <host/bas/Vector.h>

namespace offline
{
/// A picture of linear light, row by row from the top.
struct Image
{
    int width;
    int height;
    std::vector<BAS_Vec3f> pixels;

    Image(int columns, int rows) : width(columns), height(rows), pixels(size_t(columns) * size_t(rows)) {}

    BAS_Vec3f &at(int x, int y) { return pixels[size_t(y) * size_t(width) + size_t(x)]; }

    /// Write as a PNG of 8-bit sRGB values.  The reason, empty when it was written.
    std::string writePNG(const std::string &path) const;
};
}  // namespace offline

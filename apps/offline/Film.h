#pragma once

#include <vector>

#include <apps/offline/Image.h>
#include <host/bas/Vector.h>

namespace rq::offline
{
/// What is known of a pixel after all of its samples.
struct Pixel
{
    BAS_Vec3f beauty{0.0f};
    BAS_Vec3f albedo{0.0f};  ///< the surface's own colour, without light
    BAS_Vec3f normal{0.0f};  ///< in the file's space
    float depth = 0.0f;      ///< the mean distance from the eye in the file's units, infinite where nothing is seen
    float coverage = 0.0f;   ///< the part of the pixel that shows the object rather than floor and sky
    int samples = 0;
};

/// A rendered picture with its layers, row by row from the top.
struct Film
{
    Film(int wide, int high) : width(wide), height(high), pixels(size_t(wide) * size_t(high)) {}

    Pixel &at(int x, int y) { return pixels[size_t(y) * size_t(width) + size_t(x)]; }
    const Pixel &at(int x, int y) const { return pixels[size_t(y) * size_t(width) + size_t(x)]; }

    int width;
    int height;
    bool isPlain = false;  ///< it shows values, not light: screens are to show them as they are
    std::vector<Pixel> pixels;
};
}  // namespace rq::offline

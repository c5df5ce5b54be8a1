#pragma once

#include <string>
#include <vector>

#include <host/bas/Vector.h>

namespace rq::offline
{
/// A picture of linear light, row by row from the top.
class Image
{
public:
    Image(int width, int height) : width_(width), height_(height), pixels_(size_t(width) * size_t(height)) {}

    int width() const { return width_; }
    int height() const { return height_; }
    BAS_Vec3f &at(int x, int y) { return pixels_[size_t(y) * size_t(width_) + size_t(x)]; }

    /// Write as a PNG of 8-bit sRGB values.  False with the reason in `error`; no file is left behind then.
    bool writePNG(const std::string &path, std::string &error) const;

private:
    int width_;
    int height_;
    std::vector<BAS_Vec3f> pixels_;
};

/// The sRGB transfer curve (IEC 61966-2-1) from linear light to a value for the screen, and back.
float encodeSRGB(float light);
float decodeSRGB(float value);
}  // namespace rq::offline

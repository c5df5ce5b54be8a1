#include <apps/offline/Image.h>

#include <algorithm>
#include <cmath>

#include <png.h>

namespace rq::offline
{
namespace
{
/// Linear up to a knee; above it light approaches white without ever clipping.
float shoulder(float light)
{
    constexpr float kKnee = 0.75f, kRoom = 1.0f - kKnee;
    return light <= kKnee ? std::max(light, 0.0f) : 1.0f - kRoom * std::exp((kKnee - light) / kRoom);
}
}  // namespace

float encodeSRGB(float light)
{
    return light <= 0.0031308f ? 12.92f * light : 1.055f * std::pow(light, 1.0f / 2.4f) - 0.055f;
}

float decodeSRGB(float value) { return value <= 0.04045f ? value / 12.92f : std::pow((value + 0.055f) / 1.055f, 2.4f); }

bool Image::writePNG(const std::string &path, std::string &error) const
{
    std::vector<uint8_t> bytes;
    bytes.reserve(3 * pixels_.size());
    for (const BAS_Vec3f &pixel : pixels_)
        for (int channel = 0; channel < 3; ++channel)
            bytes.push_back(uint8_t(encodeSRGB(shoulder(pixel[channel])) * 255.0f + 0.5f));

    png_image picture = {};
    picture.version = PNG_IMAGE_VERSION;
    picture.width = png_uint_32(width_);
    picture.height = png_uint_32(height_);
    picture.format = PNG_FORMAT_RGB;
    if (png_image_write_to_file(&picture, path.c_str(), 0, bytes.data(), 0, nullptr))
        return true;
    error = picture.message;
    return false;
}
}  // namespace rq::offline

#include <apps/offline/Image.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include <png.h>

namespace
{
/// The sRGB transfer curve (IEC 61966-2-1), after a shoulder that keeps bright surfaces from clipping.
uint8_t encode(float light)
{
    const float bounded = std::max(0.0f, light);
    const float toned = bounded < 0.7f ? bounded : 0.7f + 0.3f * (1.0f - std::exp((0.7f - bounded) / 0.3f));
    const float curve = toned <= 0.0031308f ? 12.92f * toned : 1.055f * std::pow(toned, 1.0f / 2.4f) - 0.055f;
    return uint8_t(std::clamp(curve, 0.0f, 1.0f) * 255.0f + 0.5f);
}
}  // namespace

std::string offline::Image::writePNG(const std::string &path) const
{
    std::vector<uint8_t> bytes;
    bytes.reserve(3 * pixels.size());
    for (const BAS_Vec3f &pixel : pixels)
        for (int channel = 0; channel < 3; ++channel)
            bytes.push_back(encode(pixel[channel]));

    png_image picture;
    std::memset(&picture, 0, sizeof picture);
    picture.version = PNG_IMAGE_VERSION;
    picture.width = png_uint_32(width);
    picture.height = png_uint_32(height);
    picture.format = PNG_FORMAT_RGB;
    const bool written = png_image_write_to_file(&picture, path.c_str(), 0, bytes.data(), 0, nullptr);
    return written ? std::string() : path + ": error: " + picture.message;
}

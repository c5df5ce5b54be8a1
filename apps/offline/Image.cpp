#include <apps/offline/Image.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <apps/offline/Film.h>

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

Picture screenPicture(const Film &film)
{
    Picture picture{film.width, film.height, {}};
    picture.pixels.reserve(3 * film.pixels.size());
    for (const Pixel &pixel : film.pixels)
        for (int channel = 0; channel < 3; ++channel)
        {
            const float light = pixel.beauty[channel];
            const float shown = film.isPlain ? std::clamp(light, 0.0f, 1.0f) : shoulder(light);
            picture.pixels.push_back(uint8_t(encodeSRGB(shown) * 255.0f + 0.5f));
        }
    return picture;
}

double difference(const Picture &a, const Picture &b)
{
    if (a.width != b.width || a.height != b.height)
        return std::numeric_limits<double>::infinity();
    double sum = 0.0;
    for (size_t i = 0; i < a.pixels.size(); ++i)
        sum += std::pow((double(a.pixels[i]) - double(b.pixels[i])) / 255.0, 2.0);
    return std::sqrt(sum / double(std::max<size_t>(1, a.pixels.size())));
}
}  // namespace rq::offline

#include <apps/offline/Image.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>

#include <png.h>
#include <unistd.h>

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

bool writeTo(const std::string &path, const std::string &bytes)
{
    errno = 0;
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), std::streamsize(bytes.size()));
    file.close();
    return !file.fail();
}
}  // namespace

float encodeSRGB(float light)
{
    return light <= 0.0031308f ? 12.92f * light : 1.055f * std::pow(light, 1.0f / 2.4f) - 0.055f;
}

float decodeSRGB(float value) { return value <= 0.04045f ? value / 12.92f : std::pow((value + 0.055f) / 1.055f, 2.4f); }

ScreenPicture screenPicture(const Film &film)
{
    ScreenPicture picture{film.width, film.height, {}};
    picture.values.reserve(3 * film.pixels.size());
    for (const Pixel &pixel : film.pixels)
        for (int channel = 0; channel < 3; ++channel)
        {
            const float light = pixel.beauty[channel];
            const float shown = film.isPlain ? std::clamp(light, 0.0f, 1.0f) : shoulder(light);
            picture.values.push_back(uint8_t(encodeSRGB(shown) * 255.0f + 0.5f));
        }
    return picture;
}

std::string encodePNG(const ScreenPicture &picture, std::string &error)
{
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = png_uint_32(picture.width);
    image.height = png_uint_32(picture.height);
    image.format = PNG_FORMAT_RGB;
    png_alloc_size_t size = 0;
    std::string bytes;
    if (png_image_write_to_memory(&image, nullptr, &size, 0, picture.values.data(), 0, nullptr))
        bytes.resize(size);
    if (bytes.empty() || !png_image_write_to_memory(&image, bytes.data(), &size, 0, picture.values.data(), 0, nullptr))
    {
        error = image.message;
        return {};
    }
    bytes.resize(size);
    return bytes;
}

bool readPNG(const std::string &path, ScreenPicture &picture, std::string &error)
{
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    bool good = png_image_begin_read_from_file(&image, path.c_str()) != 0;
    if (good)
    {
        image.format = PNG_FORMAT_RGB;
        picture = {int(image.width), int(image.height), std::vector<uint8_t>(PNG_IMAGE_SIZE(image))};
        good = png_image_finish_read(&image, nullptr, picture.values.data(), 0, nullptr) != 0;
    }
    error = image.message;
    png_image_free(&image);
    return good;
}

double difference(const ScreenPicture &a, const ScreenPicture &b)
{
    if (a.width != b.width || a.height != b.height)
        return std::numeric_limits<double>::infinity();
    double sum = 0.0;
    for (size_t i = 0; i < a.values.size(); ++i)
        sum += std::pow((double(a.values[i]) - double(b.values[i])) / 255.0, 2.0);
    return std::sqrt(sum / double(std::max<size_t>(1, a.values.size())));
}

bool writeWhole(const std::string &path, const std::string &bytes, std::string &error)
{
    std::error_code ignored;
    const bool isPlain = !std::filesystem::exists(path, ignored) || std::filesystem::is_regular_file(path, ignored);
    const std::string part = isPlain ? path + ".part" + std::to_string(getpid()) : path;
    const bool good = writeTo(part, bytes) && (!isPlain || std::rename(part.c_str(), path.c_str()) == 0);
    if (good)
        return true;
    error = std::string("cannot be written: ") + std::strerror(errno);
    if (isPlain)
        std::filesystem::remove(part, ignored);
    return false;
}
}  // namespace rq::offline

#include <apps/Picture.h>

#include <png.h>

#include <io/OutputFile.h>

namespace rq::app
{
namespace
{
png_image imageOf(const Picture &picture)
{
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = png_uint_32(picture.width);
    image.height = png_uint_32(picture.height);
    image.format = PNG_FORMAT_RGB;
    return image;
}
}  // namespace

std::string encodePNG(const Picture &picture, std::string &error)
{
    png_image image = imageOf(picture);
    png_alloc_size_t size = 0;
    std::string bytes;
    if (png_image_write_to_memory(&image, nullptr, &size, 0, picture.pixels.data(), 0, nullptr))
        bytes.resize(size);
    if (bytes.empty() || !png_image_write_to_memory(&image, bytes.data(), &size, 0, picture.pixels.data(), 0, nullptr))
    {
        error = image.message;
        return {};
    }
    bytes.resize(size);
    return bytes;
}

bool writePNG(const std::string &path, const Picture &picture, std::string &error)
{
    const std::string bytes = encodePNG(picture, error);
    return !bytes.empty() && io::writeFile(path, bytes, error);
}

bool readPNG(const std::string &path, Picture &picture, std::string &error)
{
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    bool good = png_image_begin_read_from_file(&image, path.c_str()) != 0;
    if (good)
    {
        image.format = PNG_FORMAT_RGB;
        picture = {int(image.width), int(image.height), std::vector<uint8_t>(PNG_IMAGE_SIZE(image))};
        good = png_image_finish_read(&image, nullptr, picture.pixels.data(), 0, nullptr) != 0;
    }
    error = image.message;
    png_image_free(&image);
    return good;
}
}  // namespace rq::app

#include <apps/viewport/Picture.h>

#include <algorithm>

#include <epoxy/gl.h>
#include <png.h>

namespace rq::viewport
{
Picture readPicture(int width, int height)
{
    Picture picture{width, height, std::vector<uint8_t>(3 * size_t(width) * size_t(height))};
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, GL_RGB, GL_UNSIGNED_BYTE, picture.pixels.data());
    // The driver counts rows from the bottom.
    for (int y = 0; y < height / 2; ++y)
        std::swap_ranges(picture.at(0, y), picture.at(0, y) + 3 * width, picture.at(0, height - 1 - y));
    return picture;
}

bool writePNG(const std::string &path, const Picture &picture, std::string &error)
{
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = png_uint_32(picture.width);
    image.height = png_uint_32(picture.height);
    image.format = PNG_FORMAT_RGB;
    if (png_image_write_to_file(&image, path.c_str(), 0, picture.pixels.data(), 0, nullptr))
        return true;
    error = image.message;
    return false;
}
}  // namespace rq::viewport

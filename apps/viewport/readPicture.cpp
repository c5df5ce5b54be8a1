#include <apps/viewport/readPicture.h>

#include <algorithm>

#include <epoxy/gl.h>

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
}  // namespace rq::viewport

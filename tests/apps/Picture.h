#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <png.h>

namespace tests
{
/// A PNG file as it is read back.
struct Picture
{
    explicit Picture(const std::string &path)
    {
        png_image image = {};
        image.version = PNG_IMAGE_VERSION;
        EXPECT_TRUE(png_image_begin_read_from_file(&image, path.c_str())) << image.message;
        image.format = PNG_FORMAT_RGB;
        width = image.width;
        height = image.height;
        values.resize(PNG_IMAGE_SIZE(image));
        EXPECT_TRUE(png_image_finish_read(&image, nullptr, values.data(), 0, nullptr)) << image.message;
    }

    /// The part of a tile, given in tenths of the picture, that shows something red.
    double red(unsigned left, unsigned top, unsigned right, unsigned bottom) const
    {
        int64_t seen = 0, all = 0;
        for (unsigned y = top * height / 10; y < bottom * height / 10; ++y)
            for (unsigned x = left * width / 10; x < right * width / 10; ++x, ++all)
                seen += values[(y * width + x) * 3] > 2 * values[(y * width + x) * 3 + 1];
        return double(seen) / double(all);
    }

    unsigned width, height;
    std::vector<uint8_t> values;
};
}  // namespace tests

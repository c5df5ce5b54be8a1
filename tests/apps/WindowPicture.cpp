#include <algorithm>
#include <cmath>
#include <cstdlib>

#include <tests/apps/VirtualDisplay.h>

namespace tests
{
namespace
{
constexpr int kTiles = 8;

double distance(const WindowPicture::Colour &a, const WindowPicture::Colour &b)
{
    return std::max({std::abs(a.r - b.r), std::abs(a.g - b.g), std::abs(a.b - b.b)});
}
}  // namespace

WindowPicture::Colour WindowPicture::mean(const Area &area) const
{
    Colour sum;
    int64_t count = 0;
    for (int y = std::max(0, area.y); y < std::min(height, area.y + area.height); ++y)
        for (int x = std::max(0, area.x); x < std::min(width, area.x + area.width); ++x, ++count)
        {
            const unsigned char *pixel = &rgb[3 * (size_t(y) * size_t(width) + size_t(x))];
            sum.r += pixel[0];
            sum.g += pixel[1];
            sum.b += pixel[2];
        }
    const double scale = 255.0 * double(std::max<int64_t>(1, count));
    return {sum.r / scale, sum.g / scale, sum.b / scale};
}

double WindowPicture::coverage(const Area &area) const
{
    constexpr double kDifferent = 0.03;
    const Colour background = mean({area.x + area.width - 4, area.y, 4, 4});
    int64_t different = 0;
    for (int y = area.y; y < area.y + area.height; ++y)
        for (int x = area.x; x < area.x + area.width; ++x)
            different += distance(mean({x, y, 1, 1}), background) > kDifferent;
    return double(different) / double(std::max(1, area.width * area.height));
}

double WindowPicture::difference(const WindowPicture &other, const Area &area) const
{
    if (width != other.width || height != other.height)
        return 1.0;
    double most = 0.0;
    for (int row = 0; row < kTiles; ++row)
        for (int column = 0; column < kTiles; ++column)
        {
            const Area tile{area.x + area.width * column / kTiles, area.y + area.height * row / kTiles, area.width / kTiles,
                            area.height / kTiles};
            most = std::max(most, distance(mean(tile), other.mean(tile)));
        }
    return most;
}
}  // namespace tests

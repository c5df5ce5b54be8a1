#include <string_view>

#include <fmt/format.h>

#include <apps/viewport/readPicture.h>

namespace rq::viewport
{
namespace
{
// Characters of numbers, 3 by 5 dots each: five rows of three bits from the top.
struct Glyph
{
    char character;
    uint16_t dots;
};
constexpr Glyph kGlyphs[] = {
    {'0', 0b111'101'101'101'111}, {'1', 0b010'110'010'010'111}, {'2', 0b111'001'111'100'111}, {'3', 0b111'001'111'001'111},
    {'4', 0b101'101'111'001'001}, {'5', 0b111'100'111'001'111}, {'6', 0b111'100'111'101'111}, {'7', 0b111'001'001'001'001},
    {'8', 0b111'101'111'101'111}, {'9', 0b111'101'111'001'111}, {'.', 0b000'000'000'000'010}, {'-', 0b000'000'111'000'000},
    {'+', 0b000'010'111'010'000}, {'e', 0b000'111'111'100'111},
};

constexpr int kDot = 2;  // pixels
constexpr int kGlyphWidth = 4 * kDot;
constexpr int kGlyphHeight = 5 * kDot;

void fill(Picture &picture, int x, int y, int width, int height, const BAS_Vec3f &colour)
{
    for (int row = y; row < y + height; ++row)
        for (int column = x; column < x + width; ++column)
            for (int channel = 0; channel < 3; ++channel)
                picture.at(column, row)[channel] = uint8_t(colour[channel] * 255.0f + 0.5f);
}

void write(Picture &picture, int x, int y, std::string_view text)
{
    for (const char character : text)
    {
        for (const Glyph &glyph : kGlyphs)
            for (int dot = 0; glyph.character == character && dot < 15; ++dot)
                if (glyph.dots >> (14 - dot) & 1)
                    fill(picture, x + dot % 3 * kDot, y + dot / 3 * kDot, kDot, kDot, BAS_Vec3f(0.92f));
        x += kGlyphWidth;
    }
}
}  // namespace

void drawLegend(Picture &picture, const Legend &legend)
{
    constexpr int kMargin = 14, kWidth = 160, kHeight = 10, kRoom = 4 * kMargin;
    const std::string low = fmt::format("{:.4g}", legend.minimum), high = fmt::format("{:.4g}", legend.maximum);
    const int textWidth = int(low.size() + high.size() + 2) * kGlyphWidth;
    if (!legend.shown || picture.width < std::max(kWidth, textWidth) + 2 * kMargin || picture.height < kRoom)
        return;
    const int bar = std::max(kWidth, textWidth);
    const int top = picture.height - kMargin - kGlyphHeight - kHeight - 6;
    for (int x = 0; x < bar; ++x)
        fill(picture, kMargin + x, top, 1, kHeight, mappedColour(legend.map, double(x) / (bar - 1)));
    write(picture, kMargin, top + kHeight + 6, low);
    write(picture, kMargin + bar - int(high.size()) * kGlyphWidth, top + kHeight + 6, high);
}
}  // namespace rq::viewport

#include <apps/readSize.h>

#include <cstdint>

#include <fmt/format.h>

#include <apps/readPair.h>

// Each pixel takes some 60 bytes on its way to the file: at most 4 GB.
bool rq::app::readSize(const std::string &text, int &width, int &height, std::string &error)
{
    constexpr int64_t kMostPixels = int64_t(1) << 26;
    if (readPair(text, 'x', width, height) && width >= 1 && height >= 1 && int64_t(width) * height <= kMostPixels)
        return true;
    error = fmt::format("--size {}: expected WIDTHxHEIGHT, at most {} pixels", text, kMostPixels);
    return false;
}

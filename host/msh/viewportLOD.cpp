#include <host/msh/viewportLOD.h>

#include <charconv>
#include <cstring>
#include <iterator>

namespace
{
constexpr const char *kNames[] = {"unset", "off", "centroid", "box", "points", "full", "smooth", "on-demand", "own"};
constexpr int kFirst = -1;

// What five bits with a sign hold.
constexpr int kLowest = -16, kHighest = 15;
}  // namespace

int MSHviewportLOD(const char *name)
{
    if (!name)
        return -1;
    for (size_t i = 0; i < std::size(kNames); ++i)
        if (std::strcmp(name, kNames[i]) == 0)
            return kFirst + int(i);
    int level = -1;
    const char *end = name + std::strlen(name);
    const auto [stop, error] = std::from_chars(name, end, level);
    return error == std::errc() && stop == end && level >= kLowest && level <= kHighest ? level : -1;
}

std::string MSHviewportLOD(int level)
{
    const int64_t place = int64_t(level) - kFirst;
    return place >= 0 && place < int64_t(std::size(kNames)) ? kNames[place] : std::to_string(level);
}

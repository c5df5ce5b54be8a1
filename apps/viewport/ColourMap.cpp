#include <apps/viewport/ColourMap.h>

#include <algorithm>
#include <cmath>

namespace rq::viewport
{
namespace
{
const BAS_Vec3f kHeat[] = {{0.04f, 0.03f, 0.10f}, {0.35f, 0.05f, 0.38f}, {0.72f, 0.17f, 0.25f},
                           {0.94f, 0.45f, 0.10f}, {0.98f, 0.77f, 0.28f}, {1.00f, 0.98f, 0.88f}};
const BAS_Vec3f kSpectrum[] = {{0.16f, 0.20f, 0.62f}, {0.10f, 0.50f, 0.80f}, {0.16f, 0.70f, 0.60f}, {0.45f, 0.78f, 0.30f},
                               {0.90f, 0.80f, 0.22f}, {0.92f, 0.48f, 0.14f}, {0.72f, 0.12f, 0.14f}};
const BAS_Vec3f kDiverging[] = {
    {0.15f, 0.27f, 0.65f}, {0.50f, 0.66f, 0.88f}, {0.93f, 0.93f, 0.93f}, {0.92f, 0.59f, 0.47f}, {0.68f, 0.10f, 0.16f}};
const BAS_Vec3f kGrey[] = {{0.0f, 0.0f, 0.0f}, {1.0f, 1.0f, 1.0f}};

struct Entry
{
    const char *name;
    std::span<const BAS_Vec3f> stops;
};
const Entry kMaps[kColourMaps] = {
    {"heat", kHeat},
    {"spectrum", kSpectrum},
    {"diverging", kDiverging},
    {"grey", kGrey},
};
}  // namespace

const char *colourMapName(ColourMap map) { return kMaps[int(map)].name; }

bool findColourMap(std::string_view name, ColourMap &map)
{
    const auto found =
        std::find_if(std::begin(kMaps), std::end(kMaps), [&](const Entry &entry) { return name == entry.name; });
    if (found == std::end(kMaps))
        return false;
    map = ColourMap(found - std::begin(kMaps));
    return true;
}

std::span<const BAS_Vec3f> colourStops(ColourMap map) { return kMaps[int(map)].stops; }

BAS_Vec3f mappedColour(ColourMap map, double at)
{
    if (std::isnan(at))
        return BAS_Vec3f(0.5f);
    const std::span<const BAS_Vec3f> stops = colourStops(map);
    const double place = std::clamp(at, 0.0, 1.0) * double(stops.size() - 1);
    const size_t first = std::min(size_t(place), stops.size() - 2);
    const float part = float(place - double(first));
    return stops[first] * (1.0f - part) + stops[first + 1] * part;
}
}  // namespace rq::viewport

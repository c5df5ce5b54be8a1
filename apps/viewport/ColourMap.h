#pragma once

#include <span>
#include <string_view>

#include <host/bas/Vector.h>

namespace rq::viewport
{
/// How a number becomes a colour.
enum class ColourMap
{
    Heat,       ///< black over red and yellow to white: grows steadily in lightness
    Spectrum,   ///< blue over green to red
    Diverging,  ///< blue over white to red: what lies below and above the middle
    Grey
};
constexpr int kColourMaps = 4;

/// The name as an option takes it.
const char *colourMapName(ColourMap map);

/// False for a name that is none.
bool findColourMap(std::string_view name, ColourMap &map);

/// Colours (as on the screen, 0 to 1) at even distances over the range; straight lines lead from one to the next.
std::span<const BAS_Vec3f> colourStops(ColourMap map);

/// The colour at 0 to 1; clamped outside, and grey for not-a-number.
BAS_Vec3f mappedColour(ColourMap map, double at);
}  // namespace rq::viewport

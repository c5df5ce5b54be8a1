#pragma once

#include <algorithm>
#include <cmath>

namespace rq::io
{
// A channel of a colour in linear light, as glTF has it, and as it looks on a screen (IEC 61966-2-1); both 0 to 1.

inline double toScreen(double light)
{
    // So that what a few digits told before `toLight`, they tell again.
    constexpr double kKept = 1e12;
    const double held = std::clamp(light, 0.0, 1.0);
    const double screen = held <= 0.0031308 ? 12.92 * held : 1.055 * std::pow(held, 1.0 / 2.4) - 0.055;
    return std::round(screen * kKept) / kKept;
}

/// The same of light that a float tells: colours that bytes told before `toLight`, they tell again.
inline float toScreenFloat(float light)
{
    const double screen = toScreen(double(light)), ofByte = std::round(screen * 255.0) / 255.0;
    return float(std::abs(screen - ofByte) < 1e-8 ? ofByte : screen);
}

inline double toLight(double screen)
{
    const double held = std::clamp(screen, 0.0, 1.0);
    return held <= 0.04045 ? held / 12.92 : std::pow((held + 0.055) / 1.055, 2.4);
}
}  // namespace rq::io

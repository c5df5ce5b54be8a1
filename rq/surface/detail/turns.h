#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

namespace rq
{
constexpr double kRadiansPerTurn = 6.283185307179586;

/// Cosine and sine of an angle that is counted in turns.
///
/// Whole turns do not show: 0.25, 1.25 and -0.75 have the same bits, so that seams close.  Quarter turns are exact, and what
/// mirrors each other in an axis or a diagonal has the same digits.
struct Turn
{
    explicit Turn(double turns)
    {
        constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
        if (!std::isfinite(turns))
        {
            cosine = sine = kNaN;
            return;
        }
        const double rest = turns - std::nearbyint(turns);
        const double quarter = std::nearbyint(4.0 * rest);
        const double angle = kRadiansPerTurn * (rest - 0.25 * quarter);
        const double c = std::cos(angle), s = std::sin(angle);
        switch (int(quarter) & 3)
        {
        case 0:
            cosine = c, sine = s;
            break;
        case 1:
            cosine = -s, sine = c;
            break;
        case 2:
            cosine = -c, sine = -s;
            break;
        default:
            cosine = s, sine = -c;
        }
    }

    double cosine;
    double sine;
};

inline bool isWholeTurn(double begin, double end) { return std::abs(end - begin) == 1.0; }

/// The greatest value of `c * cosine + s * sine` over the turns between `a` and `b`.
inline double greatestOfWave(double c, double s, double a, double b)
{
    const double low = std::min(a, b), high = std::max(a, b);
    const double peak = std::atan2(s, c) / kRadiansPerTurn;
    if (high - low >= 1.0 || peak + std::ceil(low - peak) <= high)
        return std::hypot(c, s);
    const Turn first(a), last(b);
    return std::max(c * first.cosine + s * first.sine, c * last.cosine + s * last.sine);
}
}  // namespace rq

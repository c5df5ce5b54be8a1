#pragma once

#include <cmath>

/// The part of a parametric surface that is wanted: from the minimum to the maximum of u and of v, which may fall.
struct RQ_Parametric
{
    double umin = 0.0;
    double umax = 1.0;
    double vmin = 0.0;
    double vmax = 1.0;

    /// True for the whole surface, 0 to 1 in both directions.
    bool isWhole() const { return *this == RQ_Parametric(); }

    bool isFinite() const
    {
        return std::isfinite(umin) && std::isfinite(umax) && std::isfinite(vmin) && std::isfinite(vmax);
    }

    bool operator==(const RQ_Parametric &) const = default;
};

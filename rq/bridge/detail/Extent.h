#pragma once

#include <algorithm>

namespace rq
{
/// All values between two.  Sums, maxima and minima of such extents hold those of the values in them (Moore, "Interval
/// Analysis", 1966).
struct Extent
{
    double low = 0.0, high = 0.0;
};

inline void addTo(Extent &sum, const Extent &other)
{
    sum.low += other.low;
    sum.high += other.high;
}
inline void raiseTo(Extent &most, const Extent &other)
{
    most = {std::max(most.low, other.low), std::max(most.high, other.high)};
}
inline void lowerTo(Extent &least, const Extent &other)
{
    least = {std::min(least.low, other.low), std::min(least.high, other.high)};
}
}  // namespace rq

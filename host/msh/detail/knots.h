#pragma once

#include <string>
#include <vector>

#include <cstdint>

namespace host
{
/// One direction of a curve or surface: what its knots are checked against.
struct KnotDirection
{
    bool isBezier;
    bool wraps;
    int32_t order;
    int64_t vertices;
};

/// True for a direction that can be, with knots (none are fine) that belong to it; otherwise the reason.
bool checkKnots(const KnotDirection &direction, const std::vector<double> &knots, std::string &why);

/// The knots (breakpoints, for Bezier) that stand where none are given: even from 0 to 1, and clamped unless it wraps.
std::vector<double> evenKnots(const KnotDirection &direction);
}  // namespace host

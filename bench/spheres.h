#pragma once

#include <algorithm>
#include <cmath>

#include <bench/Job.h>

namespace bench
{
constexpr int kSphereSamples = 1000;

/// Enter a row of making a sphere of 1000 x 1000 points.  Written: position, normal, texture coordinates and a quad each.
inline void addSphere(const char *who, int threads, std::function<Work()> prepare)
{
    constexpr double kPoints = double(kSphereSamples) * kSphereSamples;
    add({"sphere", "1000x1000", who, threads, kPoints, kPoints * (12.0 + 12.0 + 8.0 + 16.0), true, std::move(prepare)});
}

/// How far packed points are from the unit sphere, at worst; 1 when there are too few.
inline double radiusError(const float *points, int64_t count)
{
    double worst = count >= kSphereSamples * (kSphereSamples - 3) ? 0.0 : 1.0;
    for (int64_t i = 0; i < count; ++i)
        worst = std::max(worst, std::abs(std::hypot(points[3 * i], points[3 * i + 1], points[3 * i + 2]) - 1.0));
    return worst;
}
}  // namespace bench

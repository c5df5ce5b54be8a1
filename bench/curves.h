#pragma once

#include <cmath>

#include <bench/Job.h>

namespace bench
{
// Hair: every curve has its vertices in a wave of its own.
constexpr int64_t kHairs = 100000;
constexpr int64_t kHairVertices = 16;
constexpr int64_t kHairSegments = 8;
constexpr int64_t kHairSpans = kHairVertices - 3;
constexpr int64_t kHairPoints = kHairSpans * kHairSegments + 1;

/// Packed x, y, z of all vertices of `hairs` curves.
inline std::vector<float> hairPositions(int64_t hairs)
{
    std::vector<float> positions(size_t(hairs * kHairVertices * 3));
    float *out = positions.data();
    for (int64_t hair = 0; hair < hairs; ++hair)
        for (int64_t i = 0; i < kHairVertices; ++i)
        {
            *out++ = float(hair % 317) + 0.3f * std::sin(0.7f * float(i + hair));
            *out++ = 0.25f * float(i);
            *out++ = float(hair / 317) + 0.3f * std::cos(0.9f * float(i - hair));
        }
    return positions;
}

/// Enter a row of `hairs` curves of which `points` points a curve are made, with `values` values each: read are positions
/// and as many attributes, written is what is made of them.
inline void addHair(const char *job, const char *mesh, const char *who, int threads, int64_t hairs, int64_t points,
                    int values, std::function<Work()> prepare)
{
    const double outputs = double(hairs * points);
    const double read = double(hairs * kHairVertices) * 4.0 * values;
    add({job, mesh, who, threads, outputs > 0.0 ? outputs : double(hairs * kHairVertices), read + outputs * 4.0 * values,
         false, std::move(prepare)});
}
}  // namespace bench

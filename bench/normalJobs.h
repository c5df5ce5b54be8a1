#pragma once

#include <algorithm>
#include <cmath>

#include <bench/Job.h>
#include <bench/meshes.h>

namespace bench
{
constexpr int kNormalCells = 1000;

/// Enter a row of normals of a million quads.  Read: positions and vertex list.  Written: `outputs` normals.
inline void addNormals(const char *job, const char *who, int threads, double outputs, std::function<Work()> prepare)
{
    constexpr double kPoints = (kNormalCells + 1.0) * (kNormalCells + 1.0);
    constexpr double kRead = kPoints * 12.0 + double(kNormalCells) * kNormalCells * 16.0;
    add({job, "quads1M", who, threads, outputs, kRead + outputs * 12.0, false, std::move(prepare)});
}

constexpr double kNormalFaces = double(kNormalCells) * kNormalCells;
constexpr double kNormalPoints = (kNormalCells + 1.0) * (kNormalCells + 1.0);

/// How far the lengths of packed normals are from 1, at worst; 1 and more where there are none.
inline double lengthError(const float *normals, int64_t count)
{
    double worst = count > 0 ? 0.0 : 1.0;
    for (int64_t i = 0; i < count; ++i)
        worst = std::max(worst, std::abs(std::hypot(normals[3 * i], normals[3 * i + 1], normals[3 * i + 2]) - 1.0));
    return worst;
}
}  // namespace bench

#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <vector>

#include <bench/Job.h>

namespace bench
{
/// A ball of six grids of quads, such as a modeller makes one: eight of its points have three faces.
struct BallCage
{
    static constexpr int kCells = 91;
    static constexpr int kFaces = 6 * kCells * kCells;
    static constexpr int kLevel = 3;
    static constexpr int64_t kRefinedFaces = int64_t(kFaces) << (2 * kLevel);

    std::vector<float> positions;
    std::vector<int32_t> counts;
    std::vector<int32_t> indices;

    BallCage()
    {
        std::map<std::vector<int>, int32_t> numbers;
        const auto point = [&](std::vector<int> at) {
            const auto [place, isNew] = numbers.try_emplace(at, int32_t(numbers.size()));
            if (isNew)
            {
                double p[3], length = 0;
                for (int i = 0; i < 3; ++i)
                {
                    p[i] = std::tan(M_PI / 4 * (2.0 * at[size_t(i)] / kCells - 1));
                    length += p[i] * p[i];
                }
                for (const double x : p)
                    positions.push_back(float(x / std::sqrt(length)));
            }
            return place->second;
        };
        for (int side = 0; side < 6; ++side)
            for (int y = 0; y < kCells; ++y)
                for (int x = 0; x < kCells; ++x)
                {
                    const int axis = side / 2, step[5] = {0, 1, 1, 0, 0};
                    for (int corner = 0; corner < 4; ++corner)
                    {
                        std::vector<int> at(3);
                        // Opposite sides turn the other way.
                        const int a = step[corner], b = step[(corner + 3) % 4];
                        at[size_t(axis)] = side % 2 ? kCells : 0;
                        at[size_t((axis + 1) % 3)] = x + (side % 2 ? a : b);
                        at[size_t((axis + 2) % 3)] = y + (side % 2 ? b : a);
                        indices.push_back(point(at));
                    }
                    counts.push_back(4);
                }
    }

    int32_t points() const { return int32_t(positions.size() / 3); }
};

/// How far the area of quads is from that of the ball: the cage's surface lies a little inside, for everybody the same.
inline double ballError(const float *points, const int32_t *quads, int64_t faces)
{
    double area = 0;
    for (int64_t face = 0; face < faces; ++face)
    {
        const float *p[4];
        for (int i = 0; i < 4; ++i)
            p[i] = points + 3 * quads[4 * face + i];
        double d[2][3], square = 0;
        for (int i = 0; i < 3; ++i)
        {
            d[0][i] = double(p[2][i]) - p[0][i];
            d[1][i] = double(p[3][i]) - p[1][i];
        }
        for (int i = 0; i < 3; ++i)
        {
            const double cross = d[0][(i + 1) % 3] * d[1][(i + 2) % 3] - d[0][(i + 2) % 3] * d[1][(i + 1) % 3];
            square += cross * cross;
        }
        area += 0.5 * std::sqrt(square);
    }
    return std::abs(area / (4 * M_PI) - 1);
}

/// Samples of the limit surface: some at scattered places of each face, face by face.
struct BallSamples
{
    static constexpr int kPerFace = 20;
    static constexpr int64_t kCount = int64_t(BallCage::kFaces) * kPerFace;

    static int32_t face(int64_t i) { return int32_t(i / kPerFace); }
    static float u(int64_t i) { return float(std::fmod(double(i) * 0.6180339887, 1.0)); }
    static float v(int64_t i) { return float(std::fmod(double(i) * 0.7548776662, 1.0)); }
};

/// How far positions are from the ball, and directions along it from its tangents, at worst.
inline double sampleError(const float *p, const float *du, const float *dv)
{
    double worst = 0;
    for (int64_t i = 0; i < 3 * BallSamples::kCount; i += 3)
    {
        double pp = 0, pu = 0, pv = 0, uu = 0, vv = 0;
        for (int64_t j = i; j < i + 3; ++j)
        {
            pp += double(p[j]) * p[j];
            pu += double(p[j]) * du[j];
            pv += double(p[j]) * dv[j];
            uu += double(du[j]) * du[j];
            vv += double(dv[j]) * dv[j];
        }
        worst = std::max({worst, std::abs(std::sqrt(pp) - 1), std::abs(pu) / std::sqrt(uu), std::abs(pv) / std::sqrt(vv)});
    }
    return worst;
}

/// The jobs that somebody runs; `again` is a second frame of the same topology.
inline void addBallRefine(const char *who, int threads, bool again, std::function<Work()> prepare)
{
    const double bytes = 16.0 * BallCage::kFaces + 12.0 * BallCage::kFaces + (again ? 12.0 : 28.0) * BallCage::kRefinedFaces;
    add({again ? "subd-refine3-again" : "subd-refine3", "ball-50k", who, threads, double(BallCage::kRefinedFaces), bytes,
         !again, std::move(prepare)});
}

inline void addBallLimit(const char *who, int threads, std::function<Work()> prepare)
{
    add({"subd-limit", "ball-50k", who, threads, double(BallSamples::kCount), 52.0 * BallSamples::kCount, false,
         std::move(prepare)});
}
}  // namespace bench

#pragma once

#include <cstdint>
#include <vector>

namespace rq
{
struct Refiner;

/// The points, faces and edges of a level of whose children a step makes the points.
struct StepPoints
{
    std::vector<int32_t> points, faces, edges;

    bool isEmpty() const { return points.empty() && faces.empty() && edges.empty(); }
    int64_t getMemoryUsage() const
    {
        return int64_t((points.capacity() + faces.capacity() + edges.capacity()) * sizeof(int32_t));
    }
};

/// What each step from level `base` on must make so that the last one can make the points of level `level` that are
/// `wanted`; the others of that level are there already.
std::vector<StepPoints> selectPoints(const Refiner &refiner, int base, int level, std::vector<uint8_t> wanted);
}  // namespace rq

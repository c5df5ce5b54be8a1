#pragma once

#include <bench/Job.h>
#include <bench/meshes.h>

namespace bench
{
/// Ten million triangles over a grid of points.
struct TriangleMesh
{
    std::vector<float> positions;
    std::vector<int32_t> corners;

    TriangleMesh()
    {
        const QuadMesh quads(2236);
        positions = quads.positions;
        for (int64_t face = 0; face < quads.faces(); ++face)
        {
            const int32_t *q = quads.indices.data() + 4 * face;
            corners.insert(corners.end(), {q[0], q[1], q[2], q[0], q[2], q[3]});
        }
    }

    int64_t points() const { return int64_t(positions.size() / 3); }
    int64_t triangles() const { return int64_t(corners.size() / 3); }

    /// The share of corners that are not where they should be.
    template <class PositionOf> double error(PositionOf &&positionOf) const
    {
        int64_t wrong = 0;
        for (size_t i = 0; i < corners.size(); ++i)
            wrong += positionOf(int64_t(i)) != positions[3 * size_t(corners[i])];
        return double(wrong) / double(corners.size());
    }
};

/// Enter a row of building that mesh in memory.  Read and written: positions and vertex list; written: each face's start.
inline void addBuild(const char *who, bool cold, std::function<Work()> prepare)
{
    constexpr double kTriangles = 2.0 * 2236 * 2236, kPoints = 2237.0 * 2237;
    add({.job = "build a detail",
         .mesh = "10M triangles",
         .who = who,
         .threads = 1,
         .items = kTriangles,
         .bytes = 2 * (12 * kPoints + 12 * kTriangles) + 4 * kTriangles,
         .cold = cold,
         .prepare = std::move(prepare)});
}
}  // namespace bench

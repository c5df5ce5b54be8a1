#pragma once

#include <array>

#include <bench/Job.h>
#include <bench/meshes.h>

namespace bench
{
/// How far the triangles' areas, seen from above and taken as absolute values, are from the square of the given size.
/// `positionOf(i)` gives x and y of corner i, three to a triangle.
template <class PositionOf> double areaError(int size, int64_t corners, PositionOf &&positionOf)
{
    double sum = 0.0;
    for (int64_t at = 0; at + 3 <= corners; at += 3)
    {
        const std::array<double, 2> a = positionOf(at), b = positionOf(at + 1), c = positionOf(at + 2);
        sum += 0.5 * std::abs((b[0] - a[0]) * (c[1] - a[1]) - (c[0] - a[0]) * (b[1] - a[1]));
    }
    const double square = double(size) * size;
    return std::abs(sum - square) / square;
}

/// The same for corners that are points of the mesh.
template <class PointOf> double areaErrorOfPoints(const QuadMesh &quads, int64_t corners, PointOf &&pointOf)
{
    return areaError(quads.size, corners, [&](int64_t i) {
        const float *position = quads.positions.data() + 3 * pointOf(i);
        return std::array<double, 2>{position[0], position[1]};
    });
}

constexpr int kTriangulationCells = 1000;

/// Enter a row of the triangulation of a million quads.  Read: positions and vertex list.  Written: three corners, their
/// source and the source face of every triangle.
inline void addTriangulation(const char *who, int threads, bool cold, std::function<Work()> prepare)
{
    constexpr double kFaces = double(kTriangulationCells) * kTriangulationCells;
    constexpr double kPoints = (kTriangulationCells + 1.0) * (kTriangulationCells + 1.0), kTriangles = 2.0 * kFaces;
    constexpr double kBytes = kPoints * 12.0 + kFaces * 16.0 + kTriangles * 28.0;
    add({"convex3", "quads1M", who, threads, kTriangles, kBytes, cold, std::move(prepare)});
}

/// Hands out one fresh copy of an input for every turn, for peers that work in place.
template <class T> class Copies
{
public:
    /// `make` is called once for the check and once for every turn.
    template <class Make> explicit Copies(Make &&make)
    {
        for (int i = 0; i <= kRepetitions; ++i)
            waiting_.push_back(make());
    }

    std::shared_ptr<T> take()
    {
        std::shared_ptr<T> copy = std::move(waiting_.back());
        waiting_.pop_back();
        return copy;
    }

private:
    std::vector<std::shared_ptr<T>> waiting_;
};
}  // namespace bench

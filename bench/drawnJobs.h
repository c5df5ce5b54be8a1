#pragma once

#include <algorithm>
#include <array>
#include <cmath>

#include <bench/Job.h>
#include <bench/meshes.h>

namespace bench
{
/// Edges sharper than this many degrees are drawn sharp.
constexpr double kDrawnCusp = 60.0;

/// Compares triangles with normals by corner with plain ones in double precision: a corner's normal is that of the quads
/// around its point that lie within the cusp angle of its triangle, or the triangle's own.
class DrawnReference
{
public:
    explicit DrawnReference(const QuadMesh &quads) : quads_(quads) {}

    /// How far the number of triangles is from two a quad, or the mean cosine of normals with the plain ones from 1,
    /// whichever is worse.  Programs weigh faces in different ways, which is some thousandths.  `positionOf(i)` and
    /// `normalOf(i)` give the three floats of corner i.
    template <class PositionOf, class NormalOf>
    double error(int64_t triangles, PositionOf &&positionOf, NormalOf &&normalOf) const
    {
        double sum = 0.0;
        for (int64_t corner = 0; corner < 3 * triangles; ++corner)
        {
            const int64_t first = corner - corner % 3;
            const Vector facet =
                unit(across(toVector(positionOf(first)), toVector(positionOf(first + 1)), toVector(positionOf(first + 2))));
            sum += dot(toVector(normalOf(corner)), around(pointAt(positionOf(corner)), facet));
        }
        const double expected = 2.0 * double(quads_.faces()), differs = std::abs(1.0 - sum / (3.0 * expected));
        return std::isfinite(differs) ? std::max(differs, std::abs(double(triangles) / expected - 1.0)) : 1.0;
    }

private:
    using Vector = std::array<double, 3>;

    static Vector toVector(const float *v) { return {double(v[0]), double(v[1]), double(v[2])}; }
    static double dot(const Vector &a, const Vector &b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
    static Vector unit(const Vector &v)
    {
        const double length = std::hypot(v[0], v[1], v[2]);
        return {v[0] / length, v[1] / length, v[2] / length};
    }
    static Vector across(const Vector &a, const Vector &b, const Vector &c)
    {
        const Vector u{b[0] - a[0], b[1] - a[1], b[2] - a[2]}, v{c[0] - a[0], c[1] - a[1], c[2] - a[2]};
        return {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
    }

    // Points lie less than half a cell from their place.
    std::array<int64_t, 2> pointAt(const float *position) const
    {
        return {std::lround(position[0]), std::lround(position[1])};
    }

    Vector around(const std::array<int64_t, 2> &point, const Vector &facet) const
    {
        Vector sum{};
        bool isAlone = true;
        for (int64_t row = point[1] - 1; row <= point[1]; ++row)
            for (int64_t column = point[0] - 1; column <= point[0]; ++column)
            {
                if (row < 0 || row >= quads_.size || column < 0 || column >= quads_.size)
                    continue;
                const Vector normal = ofQuad(row * quads_.size + column);
                if (dot(normal, facet) < std::cos(kDrawnCusp * M_PI / 180.0))
                    continue;
                isAlone = false;
                for (size_t axis = 0; axis < 3; ++axis)
                    sum[axis] += normal[axis];
            }
        return isAlone ? facet : unit(sum);
    }

    Vector ofQuad(int64_t quad) const
    {
        const auto at = [&](int64_t i) {
            return toVector(quads_.positions.data() + 3 * quads_.indices[size_t(4 * quad + i)]);
        };
        // The diagonals' product is the sum of Newell.
        const Vector a = at(0), b = at(1), c = at(2), d = at(3);
        return unit(
            across({0.0, 0.0, 0.0}, {c[0] - a[0], c[1] - a[1], c[2] - a[2]}, {d[0] - b[0], d[1] - b[1], d[2] - b[2]}));
    }

    const QuadMesh &quads_;
};

/// What is done from a mesh of quads, as its owner keeps it, to the buffers that a viewport uploads: positions and
/// triangles, and normals by cusp angle.
constexpr const char *kTrianglesJob = "detail_to_triangles", *kNormalsJob = "detail_to_normals";

/// Enter a row of one of the two.  Read: positions and vertex list.  Written: three corners a triangle, with normals.
inline void addDrawn(const char *job, const char *who, int cells, int threads, std::function<Work()> prepare)
{
    const double faces = double(cells) * cells, points = (cells + 1.0) * (cells + 1.0);
    const double corner = job == kNormalsJob ? 16.0 : 4.0;
    add({job, cells == 1000 ? "quads1M" : "quads4M", who, threads, faces, points * 12.0 + faces * (16.0 + 6.0 * corner),
         true, std::move(prepare)});
}
}  // namespace bench

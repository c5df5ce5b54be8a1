#pragma once

#include <bench/faceMeshes.h>

namespace bench
{
/// Plain normals in double precision: of faces by Newell's sums, of points as the sum of those around them.
class NormalReference
{
public:
    explicit NormalReference(const FaceMesh &mesh) : points_(size_t(mesh.points()))
    {
        for (int64_t face = 0; face < mesh.faces(); ++face)
        {
            faces_.push_back(unit(newell(mesh, mesh.face(face))));
            for (const int32_t point : mesh.face(face))
                for (size_t axis = 0; axis < 3; ++axis)
                    points_[size_t(point)][axis] += faces_.back()[axis];
        }
        for (Vector &normal : points_)
            normal = unit(normal);
    }

    /// One less the mean cosine between these and others: `normalOf(i)` gives normal i as something with three components.
    /// Normals of crooked quads, and of points with other weights, differ by a few degrees, which is some thousandths.
    template <class NormalOf> double faceError(NormalOf &&normalOf) const { return error(faces_, normalOf); }
    template <class NormalOf> double pointError(NormalOf &&normalOf) const { return error(points_, normalOf); }

private:
    using Vector = std::array<double, 3>;

    static Vector unit(const Vector &v)
    {
        const double length = std::hypot(v[0], v[1], v[2]);
        return {v[0] / length, v[1] / length, v[2] / length};
    }

    static Vector newell(const FaceMesh &mesh, std::span<const int32_t> face)
    {
        Vector sum{};
        for (size_t i = 0; i < face.size(); ++i)
        {
            const float *a = mesh.position(face[i]), *b = mesh.position(face[(i + 1) % face.size()]);
            for (size_t axis = 0; axis < 3; ++axis)
            {
                const size_t y = (axis + 1) % 3, z = (axis + 2) % 3;
                sum[axis] += (double(a[y]) - b[y]) * (double(a[z]) + b[z]);
            }
        }
        return sum;
    }

    template <class NormalOf> static double error(const std::vector<Vector> &expected, NormalOf &normalOf)
    {
        double sum = 0.0;
        for (size_t i = 0; i < expected.size(); ++i)
        {
            const auto normal = normalOf(int64_t(i));
            sum += normal[0] * expected[i][0] + normal[1] * expected[i][1] + normal[2] * expected[i][2];
        }
        return 1.0 - sum / double(expected.size());
    }

    std::vector<Vector> faces_, points_;
};
}  // namespace bench

#pragma once

#include <vector>

#include <host/bas/Vector.h>
#include <rq/surface/detail/turns.h>

namespace rq
{
/// Where the axes of a shape's space go: what points, or normals, are placed by.
struct Frame
{
    BAS_Vec3d x{1.0, 0.0, 0.0}, y{0.0, 1.0, 0.0}, z{0.0, 0.0, 1.0}, origin{0.0};
    bool normalizes = false;  ///< what is placed must be made unit vectors again

    static Frame ofPoints(const BAS_Mat4d &m)
    {
        return {{m[0][0], m[0][1], m[0][2]},
                {m[1][0], m[1][1], m[1][2]},
                {m[2][0], m[2][1], m[2][2]},
                {m[3][0], m[3][1], m[3][2]}};
    }

    /// By the cofactors, which serve where there is no inverse.  Mirroring keeps the outside out.
    static Frame ofNormals(const BAS_Mat4d &m)
    {
        const Frame points = ofPoints(m);
        Frame frame{points.y.cross(points.z), points.z.cross(points.x), points.x.cross(points.y)};
        frame.normalizes = !frame.isSimilar();
        const double factor = (isMirror(m) ? -1.0 : 1.0) / (frame.normalizes ? 1.0 : frame.x.length());
        for (BAS_Vec3d *axis : {&frame.x, &frame.y, &frame.z})
            *axis *= factor;
        return frame;
    }

    static bool isMirror(const BAS_Mat4d &m)
    {
        const Frame frame = ofPoints(m);
        return (frame.x.cross(frame.y) ^ frame.z) < 0.0;
    }

private:
    /// Whether the axes are of one length and at right angles.
    bool isSimilar() const
    {
        const double square = x.length2(), tolerance = 1e-12 * square;
        return square > 0.0 && std::abs(y.length2() - square) <= tolerance && std::abs(z.length2() - square) <= tolerance &&
               std::abs(x ^ y) <= tolerance && std::abs(y ^ z) <= tolerance && std::abs(z ^ x) <= tolerance;
    }
};

/// The cosines and sines of all columns of a grid.
struct Columns
{
    explicit Columns(int64_t count) : cosines(size_t(count)), sines(size_t(count)) {}

    void set(int64_t column, const Turn &turn)
    {
        cosines[size_t(column)] = turn.cosine;
        sines[size_t(column)] = turn.sine;
    }

    std::vector<double> cosines, sines;
};

/// A point, or a normal, swept around the z axis and then placed.
class Sweep
{
public:
    Sweep(const Frame &frame, const BAS_Vec3d &start)
        : x_(frame.x * start.x + frame.y * start.y), y_(frame.y * start.x - frame.x * start.y),
          centre_(frame.z * start.z + frame.origin), normalizes_(frame.normalizes)
    {}

    /// Where it is after a turn.
    BAS_Vec3d at(double cosine, double sine) const
    {
        const BAS_Vec3d swept = x_ * cosine + y_ * sine + centre_;
        return normalizes_ ? swept.normalized() : swept;
    }

    /// Write one vector for each column.
    template <class T> void fill(T *out, const Columns &columns) const
    {
        for (size_t i = 0; i < columns.cosines.size(); ++i, out += 3)
        {
            const BAS_Vec3d swept = at(columns.cosines[i], columns.sines[i]);
            for (int c = 0; c < 3; ++c)
                out[c] = T(swept[c]);
        }
    }

private:
    BAS_Vec3d x_, y_, centre_;
    bool normalizes_;
};
}  // namespace rq

#pragma once

#include <cmath>

#include <host/bas/Vector.h>

namespace rq::offline
{
/// A line of sight at a moment between 0, when the first motion segment holds, and 1, the last one's.
struct Ray
{
    BAS_Vec3f origin;
    BAS_Vec3f direction;  ///< of any length
    float time = 0.0f;
};

/// Where x, y, z and the origin go: a matrix without its fourth column.
struct Affine
{
    BAS_Vec3d x{1, 0, 0}, y{0, 1, 0}, z{0, 0, 1}, origin{0, 0, 0};

    Affine() = default;
    explicit Affine(const BAS_Mat4d &m)
        : x(m[0][0], m[0][1], m[0][2]), y(m[1][0], m[1][1], m[1][2]), z(m[2][0], m[2][1], m[2][2]),
          origin(m[3][0], m[3][1], m[3][2])
    {}

    BAS_Vec3d vector(const BAS_Vec3d &v) const { return x * v.x + y * v.y + z * v.z; }
    BAS_Vec3d point(const BAS_Vec3d &p) const { return vector(p) + origin; }
    BAS_Vec3f vector(const BAS_Vec3f &v) const { return BAS_Vec3f(vector(BAS_Vec3d(v))); }
    BAS_Vec3f point(const BAS_Vec3f &p) const { return BAS_Vec3f(point(BAS_Vec3d(p))); }
    Ray ray(const Ray &r) const { return {point(r.origin), vector(r.direction), r.time}; }

    double volume() const { return x % y ^ z; }
    double scale() const { return std::cbrt(std::abs(volume())); }

    /// Place what is at right angles to a surface: the result is so too, on the same side, of length 1 (0 where the surface
    /// is flattened to nothing).
    BAS_Vec3f normal(const BAS_Vec3f &n) const
    {
        const BAS_Vec3d placed = (y % z) * double(n.x) + (z % x) * double(n.y) + (x % y) * double(n.z);
        const double length = placed.length();
        if (!(length > 0.0) || !std::isfinite(length))
            return BAS_Vec3f(0.0f);
        return BAS_Vec3f(placed * (std::copysign(1.0, volume()) / length));
    }

    /// This one first.
    Affine then(const Affine &next) const
    {
        Affine both;
        both.x = next.vector(x);
        both.y = next.vector(y);
        both.z = next.vector(z);
        both.origin = next.point(origin);
        return both;
    }

    /// The way back; of what is flattened, a place that no ray finds.
    Affine inverse() const
    {
        const double size = volume();
        const double factor = size != 0.0 && std::isfinite(size) ? 1.0 / size : 0.0;
        const BAS_Vec3d a = y % z * factor, b = z % x * factor, c = x % y * factor;
        Affine back;
        back.x = {a.x, b.x, c.x};
        back.y = {a.y, b.y, c.y};
        back.z = {a.z, b.z, c.z};
        back.origin = -back.vector(origin);
        return back;
    }

    Affine mixed(const Affine &other, double part) const
    {
        const auto mix = [part](const BAS_Vec3d &a, const BAS_Vec3d &b) { return a + (b - a) * part; };
        Affine result;
        result.x = mix(x, other.x);
        result.y = mix(y, other.y);
        result.z = mix(z, other.z);
        result.origin = mix(origin, other.origin);
        return result;
    }
};

/// Which of `steps` samples at even intervals a moment lies behind, and how far on the way to the next.
struct Moment
{
    Moment(float time, int steps)
    {
        const float at = time * float(steps - 1);
        step = std::max(0, std::min(int(at), steps - 2));
        part = steps > 1 ? at - float(step) : 0.0f;
    }

    int step;
    float part;
};
}  // namespace rq::offline

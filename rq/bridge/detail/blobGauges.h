#pragma once

#include <algorithm>
#include <cmath>
#include <functional>

#include <host/bas/Vector.h>

// The squares of how far a point is on the way from the middle of a unit shape to its surface, where they are 1.

namespace rq
{
struct BallGauge
{
    double operator()(const BAS_Vec3d &p) const { return p.x * p.x + p.y * p.y + p.z * p.z; }
};

struct CapsuleGauge
{
    double halfLength;

    double operator()(const BAS_Vec3d &p) const
    {
        const double z = std::max(std::abs(p.z) - halfLength, 0.0);
        return p.x * p.x + p.y * p.y + z * z;
    }
};

/// Barr, "Superquadrics and Angle-Preserving Transformations" (IEEE Computer Graphics and Applications, 1981), taken to the
/// power that makes the inside-outside function grow with the square of the size.
struct SuperquadricGauge
{
    double exponentXY, exponentZ;

    double operator()(const BAS_Vec3d &p) const
    {
        const double reach = norm(norm(std::abs(p.x), std::abs(p.y), exponentXY), std::abs(p.z), exponentZ);
        return reach * reach;
    }

    /// (a^(2/e) + b^(2/e))^(e/2), without powers that overflow.
    static double norm(double a, double b, double e)
    {
        const double most = std::max(a, b), least = std::min(a, b);
        return most > 0.0 ? most * std::pow(1.0 + std::pow(least / most, 2.0 / e), 0.5 * e) : 0.0;
    }
};

/// A box from -1 to 1 whose edges are rounded by `radius`.
struct RoundedBoxGauge
{
    double radius;

    double operator()(const BAS_Vec3d &p) const
    {
        double a = std::abs(p.x), b = std::abs(p.y), c = std::abs(p.z);
        if (a < b)
            std::swap(a, b);
        if (b < c)
            std::swap(b, c);
        if (a < b)
            std::swap(a, b);
        // The surface is met on a side, an edge or a corner.
        const double core = 1.0 - radius;
        if (b <= core * a)
            return a * a;
        double shrink = toSphere(a + b, a * a + b * b, 2.0);
        if (c * shrink > core)
            shrink = toSphere(a + b + c, a * a + b * b + c * c, 3.0);
        return 1.0 / (shrink * shrink);
    }

    /// The factor t with (a t - core)^2 + ... = radius^2 over `count` coordinates, of which the sums are given.
    double toSphere(double sum, double squares, double count) const
    {
        const double core = 1.0 - radius;
        const double inner = core * core * sum * sum - squares * (count * core * core - radius * radius);
        return (core * sum + std::sqrt(std::max(inner, 0.0))) / squares;
    }
};
}  // namespace rq

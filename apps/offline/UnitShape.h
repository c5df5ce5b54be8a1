#pragma once

#include <host/bas/Vector.h>

namespace rq::offline
{
/// A line whose places are named by how many times its direction, of any length, leads there.
struct Line
{
    BAS_Vec3d origin;
    BAS_Vec3d direction;

    BAS_Vec3d at(double t) const { return origin + direction * t; }
};

/// Where a line meets a shape.
struct Crossing
{
    double distance;
    BAS_Vec3d normal;  ///< of any length and on either side
};

/// A quadric before its placement: a sphere, a disc in x and y, or a tube along z from -0.5 to 0.5.
struct UnitShape
{
    enum Kind
    {
        Sphere,
        Disc,
        Tube
    };

    Kind kind = Sphere;
    double taper = 1.0;  ///< of a tube: its radius at 0.5; it is 1 at -0.5
    bool caps = false;   ///< of a tube: whether discs close it

    /// The first crossing at a distance from `least` to `most`.  False, and `first` unchanged, when there is none.
    bool cross(const Line &line, double least, double most, Crossing &first) const;

    double radiusAt(double z) const { return kind == Tube ? 0.5 * (1.0 + taper) + (taper - 1.0) * z : 1.0; }
};
}  // namespace rq::offline

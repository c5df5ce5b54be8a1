#include <apps/offline/UnitShape.h>

#include <algorithm>
#include <cmath>

namespace rq::offline
{
namespace
{
/// Real roots of a t^2 + 2 b t + c, none when all are 0; without the loss of digits of the schoolbook formula.
int solve(double a, double b, double c, double (&roots)[2])
{
    if (a == 0.0)
    {
        roots[0] = -0.5 * c / b;
        return b != 0.0 ? 1 : 0;
    }
    const double discriminant = b * b - a * c;
    if (!(discriminant >= 0.0))
        return 0;
    const double q = -(b + std::copysign(std::sqrt(discriminant), b));
    roots[0] = q / a;
    roots[1] = q != 0.0 ? c / q : roots[0];
    return 2;
}

/// Keeps the nearest crossing of a range.
class Nearest
{
public:
    Nearest(double least, double most, Crossing &first) : least_(least), most_(most), first_(first) {}

    bool accepts(double t) const { return t >= least_ && t <= most_; }
    void take(double t, const BAS_Vec3d &normal)
    {
        most_ = t;
        first_ = {t, normal};
        found_ = true;
    }
    bool found() const { return found_; }

private:
    double least_, most_;
    Crossing &first_;
    bool found_ = false;
};

void crossSphere(const Line &line, Nearest &nearest)
{
    // Around the point next to the centre: far origins would cost the digits that decide.
    const double a = line.direction ^ line.direction;
    const double middle = -(line.origin ^ line.direction) / a;
    const BAS_Vec3d closest = line.at(middle);
    const double half = std::sqrt((1.0 - (closest ^ closest)) / a);
    for (const double t : {middle - half, middle + half})
        if (nearest.accepts(t))
            nearest.take(t, line.at(t));
}

void crossDisc(const Line &line, double height, double radius, Nearest &nearest)
{
    const double t = (height - line.origin.z) / line.direction.z;
    if (!nearest.accepts(t))
        return;
    const BAS_Vec3d p = line.at(t);
    if (p.x * p.x + p.y * p.y <= radius * radius)
        nearest.take(t, BAS_Vec3d(0.0, 0.0, 1.0));
}

void crossTube(const UnitShape &tube, const Line &line, Nearest &nearest)
{
    const double slope = tube.taper - 1.0;
    const BAS_Vec3d &o = line.origin, &d = line.direction;
    const double radius = tube.radiusAt(o.z), grows = slope * d.z;
    double roots[2];
    const int count = solve(d.x * d.x + d.y * d.y - grows * grows, o.x * d.x + o.y * d.y - radius * grows,
                            o.x * o.x + o.y * o.y - radius * radius, roots);
    for (int i = 0; i < count; ++i)
        if (const BAS_Vec3d p = line.at(roots[i]); nearest.accepts(roots[i]) && std::abs(p.z) <= 0.5)
            nearest.take(roots[i], BAS_Vec3d(p.x, p.y, -slope * tube.radiusAt(p.z)));
    if (tube.caps)
        for (const double end : {-0.5, 0.5})
            crossDisc(line, end, tube.radiusAt(end), nearest);
}
}  // namespace

bool UnitShape::cross(const Line &line, double least, double most, Crossing &first) const
{
    Nearest nearest(least, most, first);
    if (kind == Sphere)
        crossSphere(line, nearest);
    else if (kind == Disc)
        crossDisc(line, 0.0, 1.0, nearest);
    else
        crossTube(*this, line, nearest);
    return nearest.found();
}
}  // namespace rq::offline

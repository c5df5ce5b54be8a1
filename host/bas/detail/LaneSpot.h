#pragma once

#include <host/bas/detail/lanes.h>

namespace host
{
/// A place in the plane of each of some polygons, or a way there.
template <class Reals> struct LaneSpot
{
    LaneSpot() = default;
    HOST_LANES LaneSpot(const Reals &atX, const Reals &atY) : x(atX), y(atY) {}
    // As a whole it would be copied through narrower registers, and what is read next would wait for that.
    HOST_LANES LaneSpot(const LaneSpot &other) : x(other.x), y(other.y) {}
    HOST_LANES LaneSpot &operator=(const LaneSpot &other)
    {
        x = other.x;
        y = other.y;
        return *this;
    }

    Reals x, y;
};

template <class Reals> HOST_LANES LaneSpot<Reals> operator-(const LaneSpot<Reals> &a, const LaneSpot<Reals> &b)
{
    return {a.x - b.x, a.y - b.y};
}
template <class Reals> HOST_LANES Reals cross(const LaneSpot<Reals> &a, const LaneSpot<Reals> &b)
{
    return a.x * b.y - a.y * b.x;
}
template <class Reals> HOST_LANES Reals square(const LaneSpot<Reals> &a) { return a.x * a.x + a.y * a.y; }
}  // namespace host

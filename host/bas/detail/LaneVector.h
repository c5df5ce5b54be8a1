#pragma once

#include <host/bas/detail/lanes.h>

namespace host
{
/// A vector of each of some things.
template <class Reals> struct LaneVector
{
    Reals x, y, z;
};

template <class Reals> HOST_LANES LaneVector<Reals> operator-(const LaneVector<Reals> &a, const LaneVector<Reals> &b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
template <class Reals> HOST_LANES Reals dot(const LaneVector<Reals> &a, const LaneVector<Reals> &b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
template <class Reals> HOST_LANES LaneVector<Reals> cross(const LaneVector<Reals> &a, const LaneVector<Reals> &b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
}  // namespace host

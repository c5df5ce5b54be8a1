#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include <host/bas/Vector.h>
#include <host/plt/types.h>

namespace host
{
/// The quick way to cut counter-clockwise polygons of a few corners in general position into triangles, without queues,
/// trees and exact numbers.
///
/// Shape    n corners leave as n - 2 triangles, in the polygon's direction; short cuts and well-shaped triangles come first,
///          and no cut passes close to a corner while there is another choice
/// Failure  answers false as soon as anything is too close to call or not as in a polygon that does not cross itself (no ear
///          is left, corners on a line or in one place, coordinates that are not finite or of extreme size): `BAS_Convex`
///          then starts from the beginning
/// Threads  one object per thread
/// Cost     no memory beyond the object
class SmallPolygon
{
public:
    static constexpr int kMostCorners = 16;

    struct Triangle
    {
        int a, b, c;
    };

    /// Look at `count` corners; `point(i)` gives corner i in the plane.
    template <class Point> bool begin(int count, Point &&point);

    bool hasReflexCorner() const { return reflex_ != 0; }

    /// Cut, and write `count - 2` triangles.  Once after a `begin` that answered true.
    HOST_API bool cut(Triangle *triangles);

private:
    enum class Place
    {
        kOutside,
        kNear,  // right behind the cut, which would leave a sliver there
        kInside,
        kUnclear,
    };

    double side(int a, int b, int c) const { return (x_[a] - x_[c]) * (y_[b] - y_[c]) - (y_[a] - y_[c]) * (x_[b] - x_[c]); }
    HOST_API bool lookAtCorners(double reach);
    uint64_t lowestRank() const;
    uint64_t rankOf(int corner, double side);
    Place obstaclesOf(int ear) const;
    bool cutOff(int ear, uint64_t &best);
    bool cutQuad(int ear, Triangle *triangles) const;

    int count_ = 0;
    double unclear_ = 0.0;  // sides up to here may have the wrong sign
    uint32_t reflex_ = 0;   // bit per corner
    uint32_t blocked_ = 0;  // ears that wait for a reflex corner to go
    int prev_[kMostCorners], next_[kMostCorners];
    double x_[kMostCorners + 1], y_[kMostCorners + 1];  // the first corner once more behind the last
    double edge_[kMostCorners], cut_[kMostCorners];     // squared lengths of the edge to next and of the ear's cut
    double side_[kMostCorners];
    uint64_t rank_[kMostCorners + 1];  // the ear's key with the corner's number in the lowest bits
    uint64_t waiting_[kMostCorners];
};

template <class Point> bool SmallPolygon::begin(int count, Point &&point)
{
    if (count < 3 || count > kMostCorners)
        return false;
    count_ = count;
    const BAS_Vec2d first = point(0);
    double reach = 0.0;  // of any coordinate from the first corner's
    for (int i = 0; i < count; ++i)
    {
        const BAS_Vec2d p = point(i);
        x_[i] = p.x;
        y_[i] = p.y;
        reach = std::max({reach, std::abs(p.x - first.x), std::abs(p.y - first.y)});
    }
    return lookAtCorners(reach);
}
}  // namespace host

#pragma once

#include <host/bas/Vector.h>
#include <host/bas/detail/EarLanes.h>

namespace host
{
/// The quick way to cut one counter-clockwise polygon of a few corners into triangles: `EarLanes` with floats, or else with
/// doubles.
///
/// Failure  answers false as soon as neither can tell, and `EarCutter` has to start from the beginning
/// Threads  one object per thread
class SmallPolygon
{
public:
    static constexpr int kMostCorners = EarLanes<float, 1>::kMostCorners;

    struct Triangle
    {
        int a, b, c;
    };

    /// Look at the corners of a polygon.
    bool begin(const BAS_Vec2d *points, int count);

    bool hasReflexCorner() const { return fitsFloats_ ? floats_.hasReflexCorner() : doubles_.hasReflexCorner(); }

    /// Cut, and write `count - 2` triangles.  Once after a `begin` that answered true.
    bool cut(Triangle *triangles);

private:
    template <class Real> bool look(EarLanes<Real, 1> &ears) const;
    template <class Real> bool cutBy(EarLanes<Real, 1> &ears, Triangle *triangles) const;

    int count_ = 0;
    bool fitsFloats_ = false;
    LaneSpot<double> corners_[kMostCorners];
    EarLanes<float, 1> floats_;
    EarLanes<double, 1> doubles_;
};
}  // namespace host

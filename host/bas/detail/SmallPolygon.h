#pragma once

#include <host/bas/detail/EarRow.h>

namespace host
{
/// The quick way to cut one polygon of a few corners into triangles: `EarRow` with floats, or else with doubles.
///
/// Failure  answers false as soon as neither can tell, and `EarCutter` has to start from the beginning
/// Threads  one object per thread
class SmallPolygon
{
public:
    static constexpr int kMostCorners = EarCorners::kMost;
    using Triangle = EarCutter::Triangle;

    /// Look at a polygon as it comes.  True only when floats do, its size is nothing special and it is counter-clockwise.
    bool beginPlain(const BAS_Vec2d *points, int count);

    /// Look at a polygon that is finite, of moderate size and counter-clockwise.
    bool begin(const BAS_Vec2d *points, int count);

    bool hasReflexCorner() const { return fitsFloats_ ? floats_.hasReflexCorner() : doubles_.hasReflexCorner(); }

    /// Cut, and write `count - 2` triangles.  Once after a look that answered true.
    bool cut(Triangle *triangles);

private:
    int count_ = 0;
    bool fitsFloats_ = false;
    EarCorners corners_;
    EarRow<float> floats_;
    EarRow<double> doubles_;
};
}  // namespace host

#pragma once

#include <cstdint>
#include <vector>

#include <host/bas/detail/EarCutter.h>

namespace host
{
/// The quick way for polygons of a few corners in general position: what `EarCutter` does, without queues, trees and exact
/// numbers.
///
/// Failure  answers false as soon as anything is too close to call or not as in a polygon that does not cross itself (no ear
/// is
///          left, corners on a line or in one place, coordinates that are not finite): `EarCutter` then starts from the
///          beginning
class SmallPolygon
{
public:
    static constexpr int kMostCorners = 16;

    /// Look at the corners.
    bool begin(const BAS_Vec2d *points, int count);

    bool hasReflexCorner() const { return reflex_ != 0; }

    /// Cut.  Once after a `begin` that answered true.
    bool cut(std::vector<EarCutter::Triangle> &triangles);

private:
    enum class Place
    {
        kOutside,
        kInside,
        kUnclear,
    };

    double side(int a, int b, int c) const { return (x_[a] - x_[c]) * (y_[b] - y_[c]) - (y_[a] - y_[c]) * (x_[b] - x_[c]); }
    bool turnCounterClockwise(double extent);
    uint64_t lowestRank() const;
    void rankEar(int corner, double side);
    Place obstaclesIn(int a, int b, int c) const;
    bool lookAgain(int corner);
    void releaseBlocked();

    int count_ = 0;
    double unclear_ = 0.0;  // sides up to here may have the wrong sign
    uint32_t reflex_ = 0;   // bit per corner
    uint32_t blocked_ = 0;  // ears that wait for a reflex corner to go
    int prev_[kMostCorners], next_[kMostCorners];
    double x_[kMostCorners], y_[kMostCorners];
    double edge_[kMostCorners], cut_[kMostCorners],
        side_[kMostCorners];           // squared lengths of the edge to next and of the ear's cut
    uint64_t rank_[kMostCorners + 1];  // the ear's key with the corner's number in the lowest bits
    uint64_t waiting_[kMostCorners];
};
}  // namespace host

#pragma once

#include <cstdint>

#include <host/bas/Vector.h>
#include <host/bas/normalLanes.h>

namespace host
{
/// The corners around some points, of which each has as many, separated by creases at once; the bits are those that
/// `CornerFan` gives for one point.
///
/// Threads  one object per thread, used for some points after the other
struct CreaseLanes
{
    static constexpr int kPoints = 4;
    static constexpr int kMostCorners = 8;

    /// The unit normals of the corners' faces, and what they weigh in the normals of all corners on their side.
    alignas(32) double normals[kMostCorners][3][kPoints] = {};
    alignas(32) double weights[kMostCorners][kPoints] = {};

    /// Set entry kPoints * corner + point to the sum over the corners of that point whose normal lies near the corner's own.
    HOST_API void separate(int64_t corners, double leastCosine, bool normalize, VectorLanes &sums) const;
};
}  // namespace host

#pragma once

#include <cstdint>
#include <vector>

#include <host/bas/LargeBlocks.h>

namespace rq::io
{
/// Corners of triangles in memory: three times three floats each, at any address.
struct TriangleCorners
{
    const char *first = nullptr;  ///< the first corner of the first triangle
    int64_t stride = 36;          ///< bytes from triangle to triangle
    int64_t triangles = 0;

    int64_t size() const { return 3 * triangles; }
    const char *at(int64_t corner) const { return first + corner / 3 * stride + corner % 3 * 12; }
};

struct WeldedPoints
{
    template <class T> using Values = std::vector<T, BAS_BlockAllocator<T>>;

    Values<int32_t> points;   ///< the point of every corner
    Values<int32_t> corners;  ///< the first corner of every point
};

/// Give corners at the same place one point.
///
/// Shape    points come in the order of their first corners.  0 and -0 are the same place, NaN is nobody else's
/// Failure  std::bad_alloc; there must be fewer than 2^31 corners
/// Threads  parallel over corners; the result does not depend on the number of threads
WeldedPoints weldPoints(const TriangleCorners &corners);
}  // namespace rq::io

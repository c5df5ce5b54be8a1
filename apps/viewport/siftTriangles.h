#pragma once

#include <cstdint>
#include <vector>

#include <host/bas/LargeBlocks.h>
#include <host/bas/Vector.h>

namespace rq::viewport
{
/// The triangles of a mesh, in memory.
struct TriangleArrays
{
    const float *positions = nullptr;
    int64_t positionSize = 3;  ///< components, of which the first three count
    int64_t points = 0;
    const int32_t *corners = nullptr;  ///< the point of each, three a triangle
    int64_t triangles = 0;
};

/// How positions come to stand in a picture: matrices as the shaders have them, for row vectors, and its size in pixels.
struct PictureSpace
{
    BAS_Mat4f view, projection;
    int width = 0;
    int height = 0;
};

/// The longest side of a picture that triangles are sifted for.
constexpr int kLongestSifted = 32000;

/// What names a corner: its point, or its place among all corners.
enum class CornerName
{
    Point,
    Place
};

using CornerNames = std::vector<int32_t, BAS_BlockAllocator<int32_t>>;

/// The corners, in order, of the triangles that may colour a pixel of a picture with one sample in the middle of each: of
/// all that do, and of some that do not.
///
/// Left out are triangles outside the view, and those whose rectangle in the picture holds no middle of a pixel: where a
/// mesh has more triangles than the picture has pixels that is most of them.  Where it holds a single one, so are those that
/// pass by it.  What rounding may do to a vertex, here and in the driver, is allowed for.  Which side a triangle shows does
/// not matter.
///
/// Source   the test for small primitives in G. Wihlidal, "Optimizing the Graphics Pipeline with Compute", GDC 2016
/// Failure  corners must name points.  A triangle with a point that lies nowhere is kept
/// Threads  runs in parallel; the result does not depend on the number of threads
CornerNames siftTriangles(const TriangleArrays &mesh, const PictureSpace &space, CornerName name);
}  // namespace rq::viewport

#pragma once

#include <apps/viewport/siftTriangles.h>

namespace rq::viewport
{
/// Where a point of a triangle may lie among the middles of pixels.
///
/// A column is what lies between two middles side by side, a row what lies between two above each other.
struct alignas(8) PointCells
{
    /// The least column, the least row, and minus the greatest ones: of a triangle each is the least of its points.
    int16_t bounds[4];
};

/// Whether a triangle of such points may hold the middle of a pixel: columns as well as rows differ.
inline bool mayHoldMiddle(const PointCells &a, const PointCells &b, const PointCells &c)
{
    // Written so that it becomes two instructions for all four.
    int16_t least[4];
    for (int i = 0; i < 4; ++i)
    {
        const int16_t ofTwo = a.bounds[i] < b.bounds[i] ? a.bounds[i] : b.bounds[i];
        least[i] = ofTwo < c.bounds[i] ? ofTwo : c.bounds[i];
    }
    return (least[0] + least[2] < 0) & (least[1] + least[3] < 0);
}

/// What leads from positions to cells.
struct CellSpace
{
    explicit CellSpace(const PictureSpace &space);

    float clip[4][4];  ///< row vectors to clip space
    float error[4];    ///< what is wrong at most, in clip space, by the magnitudes of x, y, z and 1
    float width, height;
};

/// The cells of points [begin, end), written to the same places of `cells`.
///
/// A point outside the picture lies on one side of it, and has all cells of the other direction; one that is near its frame,
/// or that lies nowhere, has all cells.  So a triangle that reaches across the frame, where the driver cuts it, is kept.
void findCells(const TriangleArrays &mesh, const CellSpace &space, int64_t begin, int64_t end, PointCells *cells);
}  // namespace rq::viewport

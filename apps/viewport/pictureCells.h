#pragma once

#include <apps/viewport/siftTriangles.h>

namespace rq::viewport
{
/// Where a point or a triangle may lie among the middles of pixels.
///
/// A column is what lies between two middles side by side, a row what lies between two above each other.
struct alignas(8) Cells
{
    /// The least column, the least row, and minus the greatest ones: of a triangle each is the least of its points.
    int16_t bounds[4];

    /// Whether the middle of a pixel may lie within.
    bool mayHoldMiddle() const { return (bounds[0] + bounds[2] < 0) & (bounds[1] + bounds[3] < 0); }
};

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
void findCells(const TriangleArrays &mesh, const CellSpace &space, int64_t begin, int64_t end, Cells *cells);

/// Whether a triangle surely passes by the middle of a pixel that its cells hold.  Looked at is only a triangle of a single
/// one, as small ones are.
bool missesMiddle(const TriangleArrays &mesh, const CellSpace &space, int64_t triangle, const Cells &cells);
}  // namespace rq::viewport

#pragma once

#include <host/bas/BoundingBox.h>
#include <rq/surface/detail/CurvePositions.h>

namespace rq
{
/// Whether curves of a basis lie within the hull of their vertices.
constexpr bool liesInHull(RQ_Basis basis) { return basis <= RQ_BASIS_BSPLINE; }

/// Enlarge a box by the Bezier vertices of every span, each placed by `matrix` if that is not null.
///
/// Threads  runs in parallel over curves
void enlargeByHull(BAS_BoundingBox &box, const SpanShapes &shapes, const CurvePositions &positions, const BAS_Mat4d *matrix);

/// The same for Catmull-Rom curves of even breakpoints and packed 32-bit positions.
void enlargeByHull(BAS_BoundingBox &box, const SpanShapes &shapes, const float *positions);
}  // namespace rq

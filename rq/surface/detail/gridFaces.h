#pragma once

#include <rq/surface/PrimPolygonMesh.h>

namespace rq
{
/// The quads between the points of a grid, as a mesh without attributes; point i + nu * j is the i-th of row j.
///
/// With `alongU` the second corner of a quad is the next one of the row, else the one in the next row.  Grids of the same
/// size mostly come many at a time: small ones share the faces of the one before.  Safe from any thread.
RQ_PolygonMeshHandle gridFaces(int64_t nu, int64_t nv, bool alongU);

/// The same, alongU, with more quads where the last point of a row connects to the first, and the last row to the first.
RQ_PolygonMeshHandle gridFaces(int64_t nu, int64_t nv, bool wrapsU, bool wrapsV);
}  // namespace rq

#pragma once

#include <rq/surface/PrimPolygonMesh.h>
#include <rq/surface/detail/SurfaceBlocks.h>

namespace rq
{
/// A surface, and where its points come from.
struct IsoSurface
{
    RQ_PolygonMeshHandle mesh;
    SurfaceBlocks blocks;
    std::vector<int64_t> pointEnds;  ///< running totals of the points that lie in each block
};

/// Make the mesh of the surface where a field is zero, by marching cubes whose cases keep it closed (see `cubeLoops`).
///
/// Shape    every edge has two faces that go along it in opposite directions; faces have 3 and more corners and look out of
///          the inside.  There is a point for each edge of the grid that is cut, with its "P" and "N"
/// Failure  a null mesh when there is no surface, when it is too large (see `findSurfaceBlocks`: `isTooLarge` is set), and
///          when it is interrupted
/// Threads  runs in parallel; the result does not depend on the number of threads
IsoSurface makeIsoSurface(const LevelField &field, const SurfaceGrid &grid, bool &isTooLarge);
}  // namespace rq

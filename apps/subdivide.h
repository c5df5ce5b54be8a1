#pragma once

#include <string>
#include <vector>

#include <rq/surface/PrimSubdivisionMesh.h>

namespace rq::app
{
/// Subdivide a cage `level` times, without the normals that its file gave it: they are those of its flat faces.
///
/// Null when it has no surface.  What is wrong with it is added to `complaints`, in either case.
RQ_PolygonMeshHandle subdivide(const RQ_PrimSubdivisionMesh &cage, int level, std::vector<std::string> &complaints);

/// How often to subdivide what is to look smooth: three times, less for large meshes.
int smoothLevel(const RQ_PrimSubdivisionMesh &cage);
}  // namespace rq::app

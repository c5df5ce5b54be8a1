#pragma once

#include <vector>

#include <rq/bridge/detail/FaceLists.h>
#include <rq/bridge/detail/MeshAttributes.h>
#include <rq/prim/Primitive.h>

namespace rq
{
/// Open polygons in meshes of at most `limit` vertices each: an open polygon goes to the last mesh when it has room, else to
/// the first that has, else to a new one.  One mesh when the limit is below 0, and none without polygons.
std::vector<FaceLists> limitVertices(const FaceLists &open, int64_t limit);

/// Linear curves through the vertices of open polygons, which have the attributes of vertices and of their points.
RQ_PrimitiveHandle makeCurveMesh(const RQ_MSHDetailList &details, const MeshAttributes &attributes, const FaceLists &open,
                                 int64_t faceSetMode);
}  // namespace rq

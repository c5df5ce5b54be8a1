#pragma once

#include <bench/meshes.h>
#include <rq/data/DANumeric.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace bench
{
inline RQ_PolygonMeshHandle makeMesh(const QuadMesh &quads)
{
    RQ_AttributeMapHandle map(new RQ_AttributeMap);
    map->add("P", true);
    RQ_AttributeListHandle shared(new RQ_AttributeList(map, 1));
    shared->set(0, new RQ_DANumeric<float>(quads.positions.data(), quads.points(), 3, RQ_TYPE_POINT), 0);
    const RQ_DataArrayHandle list(new RQ_DANumeric<int32_t>(quads.indices.data(), int64_t(quads.indices.size())));
    return new RQ_PrimPolygonMesh(RQ_CountArray(quads.faces(), 4), list, shared);
}

/// The same mesh as if it had just been made: nothing that was worked out for the other is known.
inline RQ_PolygonMeshHandle withOwnTopology(const RQ_PrimPolygonMesh &mesh)
{
    return new RQ_PrimPolygonMesh(mesh.getFaceCountArray(), mesh.getVertexList(), mesh.getShared());
}
}  // namespace bench

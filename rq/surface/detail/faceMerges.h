#pragma once

#include <rq/attrib/AttributeMerge.h>
#include <rq/surface/PrimPolygonMesh.h>

// How the lists of a face come from those of the mesh, the same way for all faces.
struct RQ_PrimPolygonMesh::FaceMerges : BAS_IntrusiveRefCounter<FaceMerges>
{
    explicit FaceMerges(const RQ_PrimPolygonMesh &mesh)
        : corner(mapOf(mesh.vertex_), mapOf(mesh.shared_)), whole(mapOf(mesh.uniform_), mapOf(mesh.detail_))
    {}

    static RQ_AttributeMapHandle mapOf(const RQ_AttributeListHandle &list) { return list ? list->getMap() : nullptr; }

    RQ_AttributeMerge corner;  // of vertex and shared attributes
    RQ_AttributeMerge whole;   // of uniform and detail attributes
};

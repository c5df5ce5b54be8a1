#pragma once

#include <rq/surface/PrimPolygonMesh.h>

/// Some faces of a mesh, to become a mesh of their own.
struct RQ_PrimPolygonMesh::Piece
{
    /// A run of faces; `counts`: the corners of all faces of the mesh.
    static Piece run(const RQ_PrimPolygonMesh &mesh, const RQ_DataArrayHandle &counts, int64_t first, int64_t faces);

    /// The faces that an index array names, in its order.
    static Piece list(const RQ_PrimPolygonMesh &mesh, const RQ_DataArrayHandle &counts, const RQ_DataArrayHandle &faces);

    RQ_CountArray counts;
    RQ_DataArrayHandle faces;    ///< of the mesh, a range for a run
    RQ_DataArrayHandle points;   ///< of the mesh, for each corner
    RQ_AttributeListHandle vertex;
    RQ_AttributeListHandle uniform;
};

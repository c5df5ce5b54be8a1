#pragma once

#include <rq/prim/PrimCollect.h>
#include <rq/surface/PrimSubdivisionMesh.h>

/// Join many small meshes into few large ones, which draw faster.
///
/// The first mesh decides whether polygon meshes or subdivision meshes are gathered; single polygons go with the former.
///
/// Failure    what does not fit is refused, with the reason as a number
/// Ownership  shares the gathered meshes; the result is made of views of their attributes
/// Threads    belongs to one thread
class RQ_API RQ_CatPolygonMesh
{
public:
    /// Why a primitive is refused.
    enum Reason
    {
        ACCEPTED = 0,
        MESH_LIMIT,        ///< there are as many meshes as there may be
        KIND,              ///< of polygon and subdivision meshes this is the other
        TOTAL_FACE_LIMIT,  ///< the faces of all would be too many
        NO_FACES,
        MESH_FACE_LIMIT,  ///< its own faces are too many
        ATTRIBUTES,       ///< its attributes, or its scheme and method tags, are not those of the others
        NOT_A_MESH
    };

    /// With `mergeDetails` detail attributes may differ: they become uniform.  A limit below 1 is none.
    explicit RQ_CatPolygonMesh(bool mergeDetails = false, int64_t maxFaces = -1, int64_t maxMeshes = -1,
                               int64_t maxMeshFaces = -1);

    /// Gather those of some primitives that fit.
    RQ_CatPolygonMesh(const BAS_Array<RQ_PrimitiveHandle> &primitives, bool mergeDetails);

    bool canAppend(const RQ_PrimitiveHandle &primitive, int &reason) const;

    /// Add a mesh or polygon, placed by `transform` after its own.  False when it is refused.
    bool append(const RQ_PrimitiveHandle &primitive) { return append(primitive, nullptr); }
    bool append(const RQ_PrimitiveHandle &primitive, const RQ_TransformHandle &transform);

    /// Number of places for meshes, cleared ones included, and of the faces in them.
    int64_t entries() const { return int64_t(meshes_.size()); }
    int64_t faces() const { return faces_; }

    /// What lies at a place; null out of range and where it was cleared.
    RQ_PolygonMeshHandle getMesh(int64_t i) const;

    /// Leave a place empty; all of them; take one away; put another mesh there.  False for places that do not exist and for
    /// meshes that do not fit.
    bool clearMesh(int64_t i);
    void clearAllMeshes();
    bool remove(int64_t i);
    bool replace(int64_t i, const RQ_PrimitiveHandle &primitive);

    /// Append what the gathered meshes make, one mesh with their faces in order, to a collection; nothing without any.
    /// Transforms go into the attributes, points and faces are renumbered in face sets and tags.
    void result(RQ_PrimCollect &collect) const;

    /// True when two meshes have the same attributes, in name and form, and, but for `mergeDetails`, the same detail values;
    /// subdivision meshes also the same scheme and method tags.
    static bool matchAttributes(const RQ_PrimPolygonMesh &a, const RQ_PrimPolygonMesh &b, bool mergeDetails);

    /// The detail attributes of all meshes as uniform ones, zeros and empty text where a mesh lacks one.
    static RQ_AttributeListHandle mergeDetailLists(const BAS_Array<RQ_PolygonMeshHandle> &meshes);

private:
    RQ_PolygonMeshHandle asMesh(const RQ_PrimitiveHandle &primitive) const;
    int refusal(const RQ_PrimitiveHandle &primitive, const RQ_PolygonMeshHandle &mesh, int64_t replaced) const;
    bool exists(int64_t i) const { return i >= 0 && i < entries(); }
    BAS_Array<RQ_PolygonMeshHandle> gathered() const;

    BAS_Array<RQ_PolygonMeshHandle> meshes_;
    int64_t faces_ = 0;
    int mode_ = -1;  // a primitive type, -1 until the first mesh
    bool mergeDetails_;
    int64_t maxFaces_;
    int64_t maxMeshes_;
    int64_t maxMeshFaces_;
};

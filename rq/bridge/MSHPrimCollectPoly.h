#pragma once

#include <rq/bridge/detail/BatchData.h>
#include <rq/bridge/detail/PendingPrimitives.h>
#include <rq/bridge/detail/gatherFaces.h>
#include <rq/surface/PrimPolygonMesh.h>

/// The polygons of one refinement: closed ones, and the faces of fans, strips, soups and grids, make one mesh, open ones
/// make curves.
///
/// Ownership  details must outlive the data: primitives that come one by one are read together when they are needed
class RQ_API RQ_MSHPrimCollectPolyData : public rq::BatchData
{
public:
    explicit RQ_MSHPrimCollectPolyData(const RQ_RefineParms *parms);
    ~RQ_MSHPrimCollectPolyData() override;

    /// Append one primitive of the detail.  A face with a vertex that has no point is left out.
    void append(const MSH_Detail &detail, ELM_Offset primitive)
    {
        if (pending_.add(detail, primitive))
            return;
        readPending();
        pending_.add(detail, primitive);
    }

    /// Append the primitives of a range, in parallel.  Nothing when it is interrupted.
    void append(const MSH_Detail &detail, const ELM_Range &range, BAS_Progress &progress) override;

    /// Append what other data gathered.
    void append(RQ_MSHPrimCollectPolyData &following);

    /// The mesh of all faces, null without any or when it is interrupted: with face sets, normals and tangents as the
    /// options ask for them, without points that it does not use.
    RQ_PolygonMeshHandle makeMesh(const RQ_MSHDetailListHandle &details);

    /// What the options make of the mesh: a subdivision mesh, single polygons, or pieces of limited size.  Null without
    /// faces or when it is interrupted.
    RQ_PrimitiveHandle makeFaces(const RQ_MSHDetailListHandle &details);

    /// The curves of all open polygons, in several meshes where their size is limited.  Null without any.
    RQ_PrimitiveHandle makeCurves(const RQ_MSHDetailListHandle &details);

private:
    void readPending();
    bool coversDetail(const MSH_Detail &detail) const;
    RQ_AttributeListHandle addNormals(const RQ_MSHDetailList &details, const RQ_AttributeListHandle &vertex) const;

    const RQ_RefineParms *parms_;  // of the refinement, which outlives the data
    rq::PendingPrimitives pending_;
    rq::GatheredFaces gathered_;  // of the primitives before the pending ones
    bool asSubdivision_;
    int64_t faceSetMode_;
    bool fastCompacting_;
    bool addVertexNormals_;
    bool addTangents_;
    float cuspAngle_;
    int64_t mostCurveVertices_;
};

/// The collector of host polygons, and of the types that consist of faces: all faces of a refinement become one polygon mesh
/// that reads the detail in place, all open polygons linear curves.  With both, the mesh comes first in a collection.
///
/// Options, see `RQ_RefineParms`:
///     polys_as_subdivision   a subdivision mesh with the standard tags of its attributes
///     geo:polygonmesh        off: polygons of their own instead of a mesh
///     maxpolymeshsize        pieces of a plain mesh in a collection of their own
///     maxpolycurvesize       most vertices of a mesh of curves; several come in a collection of their own
///     facesetmode            face sets of primitive groups, see `RQ_MSHDetailList::buildFaceSets`
///     fastpolycompacting     off: a mesh of all primitives drops unused points too; one of some always does
///     addvertexnormals       vertex normals "N" by "cuspangle", unless vertices or points have one
///     addmikkt               vertex tangents "tangentu" and "tangentv" of "uv", unless there is one of them
///     material arrays        entry i belongs to primitive i: uniform "__material"; the table, as one entry of all values:
///                            detail "__material_remap"
///     viewport:packed_lod    those two hide host attributes of their names
class RQ_API RQ_MSHPrimCollectPoly : public RQ_MSHPrimCollect
{
public:
    RQ_MSHPrimCollectData *beginCollecting(const RQ_MSHDetailListHandle &details,
                                           const RQ_RefineParms *parms) const override;
    RQ_PrimitiveHandle collect(const RQ_MSHDetailListHandle &details, const MSH_Primitive *const *primitives, int segments,
                               RQ_MSHPrimCollectData *data) const override;
    RQ_PrimitiveHandle endCollecting(const RQ_MSHDetailListHandle &details, RQ_MSHPrimCollectData *data) const override;
    bool canMergeData() const override { return true; }
    void mergeData(RQ_MSHPrimCollectData *into, RQ_MSHPrimCollectData *from) const override;

    /// Take one polygon by its offset in a detail, the first one of the list.
    void collectOne(const RQ_MSHDetailListHandle &details, RQ_MSHPrimCollectData *data, const MSH_Detail &detail,
                    ELM_Offset primitive) const;

    /// Take all polygons of a range but those of a group (null: none), in parallel and without a call for each.
    void collectAll(const RQ_MSHDetailListHandle &details, RQ_MSHPrimCollectData *data, const MSH_Detail &detail,
                    const ELM_Range &range, const ELM_Group *skip) const;
};

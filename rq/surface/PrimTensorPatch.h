#pragma once

#include <rq/surface/NetDirection.h>
#include <rq/surface/PrimNet.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace rq
{
class NetSpans;
struct NetPlace;
}  // namespace rq

/// A surface over a rectangular net of control vertices: the base of patches, meshes of patches, and trimmed surfaces.
///
/// Shape    vertex i of row j is entry i + getU().vertices * j; u runs along a row, v from row to row.  The normal is
///          du x dv, and the front of the faces
/// Failure  `init` refuses what does not fit together
class RQ_API RQ_PrimTensorPatch : public RQ_PrimNet
{
public:
    /// Closed polygons in the plane of the parameters; the last point connects to the first.
    using Loops = std::vector<std::vector<BAS_Vec2d>>;

    ~RQ_PrimTensorPatch() override;

    /// Replace everything of a patch that is not yet shared.  False, with the reason in the library's diagnostics from
    /// verbose level 1 on and nothing changed, for a direction that fails its check and for vertex attributes that are
    /// missing or of another number.
    virtual bool init(const RQ_NetDirection &u, const RQ_NetDirection &v, const RQ_AttributeListHandle &vertex,
                      const RQ_AttributeListHandle &uniform = {}, const RQ_AttributeListHandle &detail = {});

    const RQ_NetDirection &getU() const { return u_; }
    const RQ_NetDirection &getV() const { return v_; }

    /// The steps in which the options (null: all defaults) have spans of a direction cut: 8, of linear ones 1, times "lod"
    /// and "ulod" or "vlod", rounded up; all spans together have at most 16384.
    static int divisions(const RQ_NetDirection &direction, const RQ_RefineParms *parms, bool isU);

    /// A mesh of quads, with all vertex attributes as those of points, evaluated at the places that the options ask for
    /// (Piegl, Tiller, The NURBS Book, 1997, chapters 3 and 4).
    ///
    /// Shape    spans without a length are passed over.  Where a direction wraps, the last points connect to the first.
    ///          Unit normals are added unless there is an "N", or the mesh has the control vertices themselves; poles take
    ///          theirs from close by.  Uniform attributes become detail ones
    /// Failure  null when a direction has no span, or attributes are missing
    RQ_PolygonMeshHandle refineToPolygonMesh(const RQ_RefineParms *parms) const;

    /// Hand over the mesh of `refineToPolygonMesh`.  False when there is none.
    bool refine(RQ_Refine &sink, const RQ_RefineParms *parms) const override;
    int64_t getMemoryUsage() const override;

protected:
    RQ_PrimTensorPatch();
    RQ_PrimTensorPatch(const RQ_PrimTensorPatch &other);

    bool saveShape(BAS_JSONWriter &writer) const override;

    /// The polygons that cut the surface, none for a whole one: what lies to the left of an outer one is kept.  `pieces` is
    /// how finely the spans of curves are to be cut.
    virtual Loops trimLoops(int pieces) const;

private:
    RQ_PolygonMeshHandle meshOf(const RQ_PolygonMeshHandle &faces, const RQ_AttributeListHandle &points) const;
    RQ_PolygonMeshHandle trimmedMesh(const rq::NetSpans &u, const rq::NetSpans &v, std::vector<rq::NetPlace> placesU,
                                     const std::vector<rq::NetPlace> &placesV, const Loops &loops) const;

    RQ_NetDirection u_, v_;
};

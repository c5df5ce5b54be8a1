#pragma once

#include <memory>

#include <rq/subd/SubdFault.h>
#include <rq/surface/PrimSubdivisionMesh.h>

namespace rq
{
struct CageChannel;
struct PatchTables;
}  // namespace rq

class RQ_SubdLimit;
class RQ_SubdTopology;
using RQ_SubdTopologyHandle = BAS_IntrusivePtr<const RQ_SubdTopology>;

/// What follows from the faces, scheme and tags of a subdivision mesh: made once, and used for every motion segment and
/// every frame of the same topology.
///
/// Shape      points that no face uses take no part.  Without tags boundaries are interpolated with their corners
///            ("edgeAndCorner"), vertex attributes are smooth but for their own corners ("cornersPlus1"), creases wear off
///            by 1 a level
/// Ownership  counted; keeps the refined topology of every level that was asked for, and of the limit surface
/// Threads    immutable, safe to use from any thread; what is made on demand is made by whoever needs it first
class RQ_API RQ_SubdTopology : public BAS_IntrusiveRefCounter<RQ_SubdTopology>
{
public:
    /// Read and check a mesh.  Null when it has a fatal fault; `faults`, if wanted, receives all there are.
    static RQ_SubdTopologyHandle create(const RQ_PrimSubdivisionMesh &mesh, RQ_SubdFaults *faults = nullptr);
    ~RQ_SubdTopology();

    /// True when a mesh has the faces that this was made of: the same counts and vertex list.  Its tags are not looked at.
    bool fits(const RQ_PrimSubdivisionMesh &mesh) const;

    RQ_Scheme scheme() const;

    /// Number of faces, and of the points that they use.
    int64_t faces() const;
    int64_t points() const;

    /// Subdivide a mesh of this topology `level` times.
    ///
    /// Floating-point attributes of points and vertices are refined in all motion segments, vertex attributes with their
    /// seams; others are taken from an element of the cage nearby.  Uniform attributes and face sets hold for all that
    /// becomes of a face.  Holes are left out.
    ///
    /// Level 0 gives the cage.  Null, with the reason in `why`, when the mesh does not fit or the result would be too large.
    RQ_PolygonMeshHandle refine(const RQ_PrimSubdivisionMesh &mesh, int level, std::string *why = nullptr) const;

    /// Bytes of all that is kept.
    int64_t getMemoryUsage() const;

private:
    friend class RQ_SubdLimit;
    struct Data;

    explicit RQ_SubdTopology(std::unique_ptr<Data> data);

    // The row of each point that takes part; null when all do.
    const RQ_DataArrayHandle &usedPoints() const;

    // The pieces of the limit surface.  Null when memory does not suffice.
    const rq::PatchTables *patchTables() const;

    // The pieces of face-varying values with some seams.
    BAS_IntrusivePtr<const rq::PatchTables> patchTables(const rq::CageChannel &seams) const;

    std::unique_ptr<Data> data_;
};

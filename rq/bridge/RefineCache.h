#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include <rq/bridge/MSHDetail.h>
#include <rq/subd/SubdTopology.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace rq
{
class RecentEntries;
}

/// Refines the frames of a detail that changes, and does again only what the change calls for.
///
///     RQ_RefineCache cache;
///     for (const MOD_ConstDetailHandle &frame : frames)                          // each made by an edit of the one before
///         for (const RQ_PrimitiveHandle &primitive : cache.refine(RQ_MSHDetail(frame), &parms))
///             if (const auto *mesh = dynamic_cast<const RQ_PrimPolygonMesh *>(primitive.get()))
///                 draw(*cache.convex(*mesh, 3));
///
/// While the topology stays, primitives are made of the ones before with nothing but their attribute arrays new: points,
/// faces, face sets, tags and what meshes find out about their topology (such as the faces around each point) are shared.
/// What is computed from values is kept under their data ids.  `getWork` tells what had to be done.
///
/// Shape      results are what the operations without a cache give, but for the cut of `convex`: it is that of the first
///            frame as long as the topology stays, so triangles do not jump from one diagonal to the other
/// Failure    as of the operations; an interrupted one gives nothing, and nothing of it is kept
/// Ownership  keeps the latest frame of every topology and set of options, and with it the snapshot that it reads; what was
///            not asked for the longest is dropped when all together, snapshots included, pass the limit
/// Threads    safe from any thread; two that ask for the same at the same time may both make it
class RQ_API RQ_RefineCache
{
public:
    /// `mostBytes` limits what is kept; a frame that is larger is refined anew every time.
    explicit RQ_RefineCache(int64_t mostBytes = int64_t(4) << 30);
    ~RQ_RefineCache();
    RQ_RefineCache(const RQ_RefineCache &) = delete;
    RQ_RefineCache &operator=(const RQ_RefineCache &) = delete;

    /// How often something was made that was not there.
    struct Work
    {
        int64_t walks = 0;         ///< details whose primitives were gathered
        int64_t convexings = 0;    ///< meshes whose faces were cut
        int64_t normals = 0;       ///< arrays of normals that were computed, one a segment
        int64_t subdivisions = 0;  ///< topologies of subdivision surfaces
        int64_t tangents = 0;      ///< pairs of arrays of tangents that were added, one a segment

        int64_t sum() const { return walks + convexings + normals + subdivisions + tangents; }
        bool operator==(const Work &) const = default;
    };
    Work getWork() const;

    /// What the detail refines to.  Details that hold other primitives than polygons, types that consist of faces, and
    /// cells, and those whose samples are matched by ids or velocities, are refined anew every time.  An attribute filter must
    /// answer the same for the same attribute, and live as long as the cache.
    std::vector<RQ_PrimitiveHandle> refine(const RQ_MSHDetail &detail, const RQ_RefineParms *parms);

    /// The mesh in convex pieces, see `RQ_PrimPolygonMesh::convex`.
    RQ_PolygonMeshHandle convex(const RQ_PrimPolygonMesh &mesh, int maxVertices = 4, bool triangulate = false);

    /// The cut that `convex` makes its pieces by, see `RQ_PrimPolygonMesh::getConvexArrays`: it tells the face that each
    /// piece, and the vertex that each corner, came from.
    bool convexArrays(const RQ_PrimPolygonMesh &mesh, RQ_ConvexArrays &arrays, int maxVertices = 4,
                      bool triangulate = false);

    /// Vertex normals by cusp angle, 3 x real32 a face-vertex, see `RQ_PrimPolygonMesh::createVertexNormals`.  Kept are
    /// those of the latest positions, one array for each segment of the mesh.
    RQ_DataArrayHandle vertexNormals(const RQ_PrimPolygonMesh &mesh, int segment, double cuspAngle);

    /// The topology of a subdivision mesh, see `RQ_SubdTopology::create`.
    RQ_SubdTopologyHandle subdivision(const RQ_PrimSubdivisionMesh &mesh);

    /// Drop everything.
    void clear();

    int64_t getMemoryUsage() const;

private:
    struct Frame;
    struct Cut;
    struct Normals;
    struct Surface;

    void countWalk(const std::vector<RQ_PrimitiveHandle> &made, const RQ_RefineParms *parms);
    std::vector<RQ_PrimitiveHandle> makeFrame(const RQ_MSHDetail &detail, const RQ_RefineParms *parms);
    std::shared_ptr<const Cut> cut(const RQ_PrimPolygonMesh &mesh, int maxVertices, bool triangulate);

    const std::unique_ptr<rq::RecentEntries> entries_;
    std::atomic<int64_t> walks_{0}, convexings_{0}, normals_{0}, subdivisions_{0}, tangents_{0};
};

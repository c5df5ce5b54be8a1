#include <rq/surface/PrimPolygonMesh.h>

#include <algorithm>

#include <host/bas/Parallel.h>
#include <rq/surface/detail/convexing.h>

int64_t rq::ConvexTask::jobs() const
{
    // Below a thousand faces starting tasks costs more than it gains; jobs of 500 faces and more keep a convexer busy.
    constexpr int64_t kSmallMesh = 1000, kFacesPerJob = 500;
    if (faces() < kSmallMesh)
        return 1;
    const int64_t processors = BAS_Threads::enabled() ? BAS_Threads::processors() : 1;
    return std::min(faces() / kFacesPerJob, processors > 1 ? std::min(2 * processors, faces()) : 1);
}

namespace
{
bool cut(const RQ_PrimPolygonMesh &mesh, const rq::ConvexWanted &wanted, int maxVertices, bool triangulate,
         const RQ_FaceSet *subset, RQ_ConvexArrays &arrays)
{
    arrays = {};  // what an earlier convexing left there counts for nothing
    const rq::Positions positions(mesh.getShared() ? mesh.getShared()->get("P", 0) : nullptr);
    if (!positions.isValid() || !mesh.getVertexList())
        return false;
    BAS_Progress progress("Convexing display geometry");
    const rq::ConvexTask task{positions,   mesh.getFaceCountArray(), mesh.getVertexList(), std::max(maxVertices, 3),
                              triangulate, subset,                   wanted,               progress};
    const bool done = task.limit == 3 && !subset ? rq::convexToTriangles(task, arrays) : rq::convexToPieces(task, arrays);
    if (!done)
        arrays = {};
    return done;
}
}  // namespace

RQ_PolygonMeshHandle RQ_PrimPolygonMesh::convex(int maxVertices, bool triangulate, bool edgeFlags, bool keepFaceSets,
                                                const RQ_FaceSet *faceSubset) const
{
    if (getFaceCount() == 0 || (getMinVertexCount() == 3 && getMaxVertexCount() == 3 && !faceSubset))
        return const_cast<RQ_PrimPolygonMesh *>(this);
    const bool hasSets = keepFaceSets && faceSets_;
    rq::ConvexWanted wanted;
    wanted.sourceVertex = edgeFlags || (vertex_ && vertex_->entries() > 0);
    wanted.sourceFace = edgeFlags || hasSets || keepsMoreOfFaces() || (uniform_ && uniform_->entries() > 0);
    wanted.whole = false;
    RQ_ConvexArrays arrays;
    if (!cut(*this, wanted, maxVertices, triangulate, faceSubset, arrays))
        return nullptr;
    const RQ_PolygonMeshHandle mesh = adoptConvexing(arrays);
    mesh->setConvexed(!faceSubset);
    if (!hasSets)
        mesh->setFaceSetMap(nullptr);
    if (edgeFlags)
    {
        const RQ_DataArrayHandle flags = rq::convexEdgeFlags(counts_, mesh->counts_, arrays);
        const RQ_AttributeListHandle none(new RQ_AttributeList(new RQ_AttributeMap));
        mesh->vertex_ = (mesh->vertex_ ? mesh->vertex_ : none)->addAttribute("__edge", flags, true);
    }
    return mesh;
}

bool RQ_PrimPolygonMesh::getConvexArrays(RQ_ConvexArrays &arrays, int maxVertices, bool triangulate) const
{
    return cut(*this, rq::ConvexWanted(), maxVertices, triangulate, nullptr, arrays);
}

RQ_PolygonMeshHandle RQ_PrimPolygonMesh::adoptConvexing(const RQ_ConvexArrays &arrays) const
{
    RQ_CountArray counts;
    counts.init(arrays.counts, arrays.minCount, arrays.maxCount);
    const RQ_AttributeListHandle uniform =
        uniform_ && arrays.sourceFace ? uniform_->createIndirect(arrays.sourceFace) : uniform_;
    const RQ_AttributeListHandle vertex =
        vertex_ && arrays.sourceVertex ? vertex_->createIndirect(arrays.sourceVertex) : vertex_;
    const RQ_PolygonMeshHandle mesh = clone(counts, arrays.vertexList, shared_, vertex, uniform, detail_);
    mesh->followElements(arrays.sourceFace, nullptr);
    if (faceSets_ && arrays.sourceFace)
        mesh->setFaceSetMap(faceSets_->followFaces(arrays.sourceFace));
    mesh->setConvexed(true);
    return mesh;
}

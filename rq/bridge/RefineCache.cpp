#include <rq/bridge/RefineCache.h>

#include <algorithm>
#include <typeinfo>

#include <rq/bridge/detail/KeyText.h>
#include <rq/bridge/detail/RecentEntries.h>

namespace
{
/// What was found out about the faces of a mesh.
struct OfFaces : rq::RecentEntries::Entry
{
    RQ_CountArray counts;

    explicit OfFaces(const RQ_PrimPolygonMesh &mesh) : counts(mesh.getFaceCountArray()) {}

    // The key tells the corners of the faces, but not all of how they are shared out.
    bool isOf(const RQ_PrimPolygonMesh &mesh) const { return counts.isEqual(mesh.getFaceCountArray()); }
};

/// Whether something tells the faces of a mesh from those of others.
bool isKnown(const RQ_PrimPolygonMesh &mesh) { return mesh.getVertexList() && mesh.getVertexList()->getDataId() != -1; }

template <class T>
std::shared_ptr<const T> findFor(rq::RecentEntries &entries, const std::string &key, const RQ_PrimPolygonMesh &mesh)
{
    const auto before = std::static_pointer_cast<const T>(isKnown(mesh) ? entries.find(key) : nullptr);
    return before && before->isOf(mesh) ? before : nullptr;
}
}  // namespace

/// The faces of a mesh cut into pieces.
struct RQ_RefineCache::Cut final : OfFaces
{
    using OfFaces::OfFaces;

    RQ_ConvexArrays arrays;
    RQ_FaceSetMapHandle sets;   // of the mesh that was cut
    RQ_PolygonMeshHandle mesh;  // the pieces without attributes

    int64_t getMemoryUsage() const override
    {
        int64_t bytes = int64_t(sizeof(*this)) + counts.getMemoryUsage() + mesh->getMemoryUsage();
        for (const RQ_DataArrayHandle &array : {arrays.counts, arrays.sourceVertex, arrays.sourceFace, arrays.whole})
            bytes += array ? array->getMemoryUsage() : 0;
        return bytes;
    }
};

/// Normals of the latest positions, as many as a mesh has segments: older ones would hold memory that the next frame wants.
struct RQ_RefineCache::Normals final : OfFaces
{
    using OfFaces::OfFaces;

    std::vector<std::pair<int64_t, RQ_DataArrayHandle>> byPositions;  // data id of the positions; the latest come first

    int64_t getMemoryUsage() const override
    {
        int64_t bytes = int64_t(sizeof(*this)) + counts.getMemoryUsage();
        for (const auto &[id, array] : byPositions)
            bytes += array->getMemoryUsage();
        return bytes;
    }
};

struct RQ_RefineCache::Surface final : OfFaces
{
    RQ_SubdTopologyHandle topology;

    Surface(const RQ_PrimPolygonMesh &mesh, const RQ_SubdTopologyHandle &made) : OfFaces(mesh), topology(made) {}
    int64_t getMemoryUsage() const override
    {
        return int64_t(sizeof(*this)) + counts.getMemoryUsage() + topology->getMemoryUsage();
    }
};

RQ_RefineCache::RQ_RefineCache(int64_t mostBytes) : entries_(std::make_unique<rq::RecentEntries>(mostBytes)) {}
RQ_RefineCache::~RQ_RefineCache() = default;

RQ_RefineCache::Work RQ_RefineCache::getWork() const { return {walks_, convexings_, normals_, subdivisions_, tangents_}; }
void RQ_RefineCache::clear() { entries_->clear(); }
int64_t RQ_RefineCache::getMemoryUsage() const { return int64_t(sizeof(*this)) + entries_->getMemoryUsage(); }

std::shared_ptr<const RQ_RefineCache::Cut> RQ_RefineCache::cut(const RQ_PrimPolygonMesh &mesh, int maxVertices,
                                                               bool triangulate)
{
    // Whoever asks for triangles need not say so twice.
    maxVertices = std::max(maxVertices, 3);
    triangulate |= maxVertices == 3;
    const std::string key = rq::KeyText('C').addFaces(mesh).add(maxVertices).add(triangulate).text();
    if (const auto before = findFor<Cut>(*entries_, key, mesh))
        return before;
    const auto made = std::make_shared<Cut>(mesh);
    ++convexings_;
    if (!mesh.getConvexArrays(made->arrays, maxVertices, triangulate))
        return nullptr;
    made->sets = mesh.faceSetMap();
    made->mesh = new RQ_PrimPolygonMesh(*mesh.adoptConvexing(made->arrays), nullptr, nullptr, nullptr, nullptr);
    if (isKnown(mesh))
        entries_->store(key, made);
    return made;
}

bool RQ_RefineCache::convexArrays(const RQ_PrimPolygonMesh &mesh, RQ_ConvexArrays &arrays, int maxVertices, bool triangulate)
{
    const std::shared_ptr<const Cut> made = mesh.getVertexList() ? cut(mesh, maxVertices, triangulate) : nullptr;
    if (made)
        arrays = made->arrays;
    return made != nullptr;
}

RQ_PolygonMeshHandle RQ_RefineCache::convex(const RQ_PrimPolygonMesh &mesh, int maxVertices, bool triangulate)
{
    const bool isWhole = mesh.getFaceCount() == 0 || (mesh.getMinVertexCount() == 3 && mesh.getMaxVertexCount() == 3);
    if (isWhole || !mesh.getVertexList() || typeid(mesh) != typeid(RQ_PrimPolygonMesh))
    {
        convexings_ += !isWhole;
        return mesh.convex(maxVertices, triangulate);
    }
    const std::shared_ptr<const Cut> made = cut(mesh, maxVertices, triangulate);
    if (!made)
        return nullptr;
    const auto through = [](const RQ_AttributeListHandle &list, const RQ_DataArrayHandle &rows) {
        return list ? list->createIndirect(rows) : nullptr;
    };
    const RQ_PolygonMeshHandle pieces(
        new RQ_PrimPolygonMesh(*made->mesh, mesh.getShared(), through(mesh.getVertex(), made->arrays.sourceVertex),
                               through(mesh.getUniform(), made->arrays.sourceFace), mesh.getDetail()));
    pieces->setPrimitiveTransform(mesh.getPrimitiveTransform());
    if (mesh.faceSetMap() != made->sets)
        pieces->setFaceSetMap(mesh.faceSetMap() ? mesh.faceSetMap()->followFaces(made->arrays.sourceFace) : nullptr);
    return pieces;
}

RQ_DataArrayHandle RQ_RefineCache::vertexNormals(const RQ_PrimPolygonMesh &mesh, int segment, double cuspAngle)
{
    const RQ_DataArrayHandle positions = mesh.getShared() ? mesh.getShared()->get("P", segment) : nullptr;
    if (!positions || !mesh.getVertexList())
        return nullptr;
    const int64_t id = isKnown(mesh) ? positions->getDataId() : -1;
    const std::string key = rq::KeyText('N').addFaces(mesh).add(cuspAngle).text();
    const auto kept = std::make_shared<Normals>(mesh);
    if (const auto before = id == -1 ? nullptr : findFor<Normals>(*entries_, key, mesh))
    {
        for (const auto &[positionId, array] : before->byPositions)
            if (positionId == id)
                return array;
        const size_t most = size_t(std::max(mesh.getMotionSegments(), 1)) - 1;
        kept->byPositions.assign(before->byPositions.begin(),
                                 before->byPositions.begin() + ptrdiff_t(std::min(most, before->byPositions.size())));
        // What is too old goes before the new normals are made, which then take its place in memory.
        entries_->store(key, std::make_shared<Normals>(*kept));
    }
    ++normals_;
    const RQ_DataArrayHandle normals = mesh.createVertexNormals(segment, "P", cuspAngle, true, RQ_STORAGE_REAL32);
    if (!normals || id == -1)
        return normals;
    kept->byPositions.emplace(kept->byPositions.begin(), id, normals);
    entries_->store(key, kept);
    return normals;
}

RQ_SubdTopologyHandle RQ_RefineCache::subdivision(const RQ_PrimSubdivisionMesh &mesh)
{
    rq::KeyText key('S');
    bool isKept = isKnown(mesh);
    if (isKept)
        key.addFaces(mesh).add(mesh.scheme()).add(mesh.getPointCount());
    for (auto tag = mesh.beginTags(); !(tag == mesh.endTag()); ++tag)
    {
        key.add((*tag).name().view());
        for (const auto *arrays : {&(*tag).getAllInt(), &(*tag).getAllReal(), &(*tag).getAllString()})
        {
            key.add(arrays->size());
            for (const RQ_DataArrayHandle &array : *arrays)
            {
                key.add(array->getDataId());
                isKept = isKept && array->getDataId() != -1;
            }
        }
    }
    if (const auto before = isKept ? findFor<Surface>(*entries_, key.text(), mesh) : nullptr)
        return before->topology;
    ++subdivisions_;
    const RQ_SubdTopologyHandle topology = RQ_SubdTopology::create(mesh);
    if (isKept && topology)
        entries_->store(key.text(), std::make_shared<Surface>(mesh, topology));
    return topology;
}

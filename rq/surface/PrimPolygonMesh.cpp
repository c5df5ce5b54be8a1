#include <rq/surface/PrimPolygonMesh.h>

#include <host/bas/JSONWriter.h>
#include <rq/data/DARange.h>
#include <rq/prim/PrimitiveJSON.h>
#include <rq/prim/PrimitiveType.h>
#include <rq/surface/detail/SharedTopology.h>
#include <rq/surface/detail/counts.h>
#include <rq/surface/detail/faceMerges.h>
#include <rq/surface/detail/lists.h>

RQ_PrimPolygonMesh::RQ_PrimPolygonMesh() = default;

RQ_PrimPolygonMesh::RQ_PrimPolygonMesh(const RQ_DataArrayHandle &counts, const RQ_DataArrayHandle &vertexList,
                                       const RQ_AttributeListHandle &shared, const RQ_AttributeListHandle &vertex,
                                       const RQ_AttributeListHandle &uniform, const RQ_AttributeListHandle &detail,
                                       RQ_IndexingMode mode, int64_t minCount, int64_t maxCount)
{
    init(counts, vertexList, shared, vertex, uniform, detail, mode, minCount, maxCount);
}

RQ_PrimPolygonMesh::RQ_PrimPolygonMesh(const RQ_CountArray &counts, const RQ_DataArrayHandle &vertexList,
                                       const RQ_AttributeListHandle &shared, const RQ_AttributeListHandle &vertex,
                                       const RQ_AttributeListHandle &uniform, const RQ_AttributeListHandle &detail)
{
    init(counts, vertexList, shared, vertex, uniform, detail);
}

RQ_PrimPolygonMesh::RQ_PrimPolygonMesh(const RQ_PrimPolygon &polygon) : RQ_Primitive(polygon)
{
    const int64_t corners = polygon.getVertexCount();
    init(RQ_CountArray(1, corners), new RQ_DARange(0, corners, 1), polygon.getVertex(), nullptr, nullptr,
         polygon.getUniform());
}

RQ_PrimPolygonMesh::RQ_PrimPolygonMesh(const RQ_PrimPolygonMesh &other, const RQ_AttributeListHandle &shared,
                                       const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform,
                                       const RQ_AttributeListHandle &detail)
    : RQ_PrimPolygonMesh(other)
{
    shared_ = shared;
    vertex_ = vertex;
    uniform_ = uniform;
    detail_ = detail;
    dropDataIdHash();
}

RQ_PrimPolygonMesh::RQ_PrimPolygonMesh(const RQ_PrimPolygonMesh &other, const RQ_DataArrayHandle &vertexList,
                                       const RQ_AttributeListHandle &shared)
    : RQ_PrimPolygonMesh(other, shared, other.vertex_, other.uniform_, other.detail_)
{
    setVertexList(vertexList);
}

RQ_PrimPolygonMesh::RQ_PrimPolygonMesh(const RQ_PrimPolygonMesh &other)
    : RQ_Primitive(other), shared_(other.shared_), vertex_(other.vertex_), uniform_(other.uniform_), detail_(other.detail_),
      vertexList_(other.vertexList_), counts_(other.counts_), topology_(other.topology_), faceSets_(other.faceSets_),
      convexed_(other.convexed_)
{}

RQ_PrimPolygonMesh::~RQ_PrimPolygonMesh() = default;

void RQ_PrimPolygonMesh::init(const RQ_DataArrayHandle &counts, const RQ_DataArrayHandle &vertexList,
                              const RQ_AttributeListHandle &shared, const RQ_AttributeListHandle &vertex,
                              const RQ_AttributeListHandle &uniform, const RQ_AttributeListHandle &detail,
                              RQ_IndexingMode mode, int64_t minCount, int64_t maxCount)
{
    RQ_CountArray ends;
    if (counts)
        ends.init(counts, minCount, maxCount);
    init(ends, vertexList, shared, vertex, uniform, detail);
    vertexList_ = rq::integersOfWidth(vertexList_, mode);
}

void RQ_PrimPolygonMesh::init(const RQ_CountArray &counts, const RQ_DataArrayHandle &vertexList,
                              const RQ_AttributeListHandle &shared, const RQ_AttributeListHandle &vertex,
                              const RQ_AttributeListHandle &uniform, const RQ_AttributeListHandle &detail)
{
    counts_ = counts;
    setVertexList(vertexList);
    shared_ = shared;
    vertex_ = vertex;
    uniform_ = uniform;
    detail_ = detail;
    faceSets_.reset();
    merges_.reset();
    convexed_ = false;
    dropDataIdHash();
}

void RQ_PrimPolygonMesh::setVertexList(const RQ_DataArrayHandle &vertexList)
{
    vertexList_ = vertexList;
    topology_ = new rq::SharedTopology;
}

int64_t RQ_PrimPolygonMesh::getPointCount() const { return rq::entriesOf(shared_); }

RQ_DataArrayHandle RQ_PrimPolygonMesh::getFaceCounts(RQ_IndexingMode mode) const { return rq::countsOfWidth(counts_, mode); }

void RQ_PrimPolygonMesh::getEdgePoints(int64_t face, int64_t edge, int64_t &p0, int64_t &p1) const
{
    p0 = getPoint(face, edge);
    p1 = getPoint(face, edge + 1 < counts_.getCount(face) ? edge + 1 : 0);
}

void RQ_PrimPolygonMesh::addFaceSet(const BAS_StringHolder &name, const RQ_FaceSetHandle &set)
{
    // Other meshes may share the map that is there.
    const RQ_FaceSetMapHandle sets(faceSets_ ? new RQ_FaceSetMap(*faceSets_) : new RQ_FaceSetMap);
    sets->add(name, set, true);
    faceSets_ = sets;
}

const char *RQ_PrimPolygonMesh::className() const { return "RQ_PrimPolygonMesh"; }
int RQ_PrimPolygonMesh::getPrimitiveType() const { return RQ_PRIM_POLYGON_MESH; }

int RQ_PrimPolygonMesh::getMotionSegments() const
{
    return rq::motionSegments(*this, {&shared_, &vertex_, &uniform_, &detail_});
}

int64_t RQ_PrimPolygonMesh::getMemoryUsage() const
{
    int64_t bytes = int64_t(sizeof(*this)) + counts_.getMemoryUsage();
    if (vertexList_)
        bytes += vertexList_->getMemoryUsage();
    bytes += rq::memoryUsage({&shared_, &vertex_, &uniform_, &detail_});
    if (faceSets_)
        bytes += faceSets_->getMemoryUsage();
    if (topology_)
        bytes += topology_->getMemoryUsage();
    return bytes;
}

void RQ_PrimPolygonMesh::enlargeBounds(BAS_BoundingBox *boxes, int segments) const { enlargeP(boxes, segments, shared_); }

bool RQ_PrimPolygonMesh::saveFaces(BAS_JSONWriter &writer) const
{
    return counts_.save(writer) &&
           (vertexList_ ? vertexList_->save(writer, false) : writer.beginArray() && writer.endArray());
}

bool RQ_PrimPolygonMesh::saveListsAndSets(BAS_JSONWriter &writer) const
{
    return saveAttributeLists(writer) &&
           (!faceSets_ || (writer.beginMap() && writer.key("facesets") && faceSets_->save(writer) && writer.endMap()));
}

bool RQ_PrimPolygonMesh::save(BAS_JSONWriter &writer) const
{
    const jsonWriter record(writer, RQprimitiveType(RQ_PRIM_POLYGON_MESH));
    return saveFaces(*record) && saveListsAndSets(*record);
}

void RQ_PrimPolygonMesh::hardenAttributes() { rq::hardenLists({&shared_, &vertex_, &uniform_, &detail_}); }

RQ_PrimitiveHandle RQ_PrimPolygonMesh::doHarden() const
{
    const RQ_PolygonMeshHandle copy = clone(shared_, vertex_, uniform_, detail_);
    copy->hardenAttributes();
    if (const RQ_DataArrayHandle list = copy->vertexList_ ? copy->vertexList_->harden() : nullptr)
        copy->vertexList_ = list;
    copy->counts_.harden();
    return copy;
}

RQ_PrimitiveHandle RQ_PrimPolygonMesh::doSoftCopy() const { return clone(shared_, vertex_, uniform_, detail_); }

RQ_PrimitiveHandle RQ_PrimPolygonMesh::doAttributeMerge(const RQ_Primitive &source, const BAS_StringMMPattern *vertex,
                                                        const BAS_StringMMPattern *point, const BAS_StringMMPattern *uniform,
                                                        const BAS_StringMMPattern *detail) const
{
    bool changed = false;
    const auto merged = [&changed](const RQ_AttributeListHandle &own, const RQ_AttributeListHandle &other,
                                   const BAS_StringMMPattern *pattern) {
        return mergeAttributeLists(changed, own, other, pattern, nullptr);
    };
    const RQ_AttributeListHandle vertices = merged(vertex_, source.getVertexAttributes(), vertex);
    const RQ_AttributeListHandle points = merged(shared_, source.getPointAttributes(), point);
    const RQ_AttributeListHandle faces = merged(uniform_, source.getUniformAttributes(), uniform);
    const RQ_AttributeListHandle whole = merged(detail_, source.getDetailAttributes(), detail);
    if (!changed)
        return const_cast<RQ_PrimPolygonMesh *>(this);
    return clone(points, vertices, faces, whole);
}

RQ_PolygonMeshHandle RQ_PrimPolygonMesh::clone(const RQ_DataArrayHandle &vertexList,
                                               const RQ_AttributeListHandle &vertex) const
{
    return clone(vertexList, shared_, vertex, uniform_, detail_);
}

RQ_PolygonMeshHandle RQ_PrimPolygonMesh::clone(const RQ_AttributeListHandle &shared, const RQ_AttributeListHandle &vertex,
                                               const RQ_AttributeListHandle &uniform,
                                               const RQ_AttributeListHandle &detail) const
{
    return new RQ_PrimPolygonMesh(*this, shared, vertex, uniform, detail);
}

RQ_PolygonMeshHandle RQ_PrimPolygonMesh::clone(const RQ_CountArray &counts, const RQ_DataArrayHandle &vertexList,
                                               const RQ_AttributeListHandle &shared, const RQ_AttributeListHandle &vertex,
                                               const RQ_AttributeListHandle &uniform,
                                               const RQ_AttributeListHandle &detail) const
{
    RQ_PolygonMeshHandle mesh(new RQ_PrimPolygonMesh(*this));
    mesh->init(counts, vertexList, shared, vertex, uniform, detail);
    return mesh;
}

RQ_PolygonMeshHandle RQ_PrimPolygonMesh::clone(const RQ_DataArrayHandle &vertexList, const RQ_AttributeListHandle &shared,
                                               const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform,
                                               const RQ_AttributeListHandle &detail) const
{
    RQ_PolygonMeshHandle mesh(new RQ_PrimPolygonMesh(*this, shared, vertex, uniform, detail));
    mesh->setVertexList(vertexList);
    return mesh;
}

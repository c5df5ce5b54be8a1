#include <rq/surface/PrimCellMesh.h>

#include <rq/prim/PrimitiveJSON.h>
#include <rq/prim/PrimitiveType.h>
#include <rq/prim/RefineParms.h>
#include <rq/surface/detail/checkVertexList.h>
#include <rq/surface/detail/keptPoints.h>
#include <rq/surface/detail/lists.h>
#include <rq/surface/detail/outerFaces.h>

/// What follows from the cells alone, found when first wanted and shared by all meshes of the same cells.
class rq::SharedOuterFaces : public BAS_IntrusiveRefCounter<rq::SharedOuterFaces>
{
public:
    host::Published<rq::OuterFaces> faces;
};

RQ_PrimCellMesh::RQ_PrimCellMesh() = default;
RQ_PrimCellMesh::RQ_PrimCellMesh(const RQ_PrimCellMesh &other) = default;
RQ_PrimCellMesh::~RQ_PrimCellMesh() = default;

void RQ_PrimCellMesh::init(const RQ_DataArrayHandle &vertexList, const RQ_AttributeListHandle &shared,
                           const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform,
                           const RQ_AttributeListHandle &detail)
{
    vertexList_ = vertexList;
    shared_ = shared;
    vertex_ = vertex;
    uniform_ = uniform;
    detail_ = detail;
    outer_ = new rq::SharedOuterFaces;
    dropDataIdHash();
}

bool RQ_PrimCellMesh::validate(std::string *why) const
{
    std::string fault;
    if (getVertexCount() % getCornerCount() != 0)
        fault = fmt::format("vertex list has {} entries, cells have {} corners", getVertexCount(), getCornerCount());
    if (fault.empty())
        fault = rq::checkVertexList(vertexList_, getPointCount());
    if (fault.empty())
        fault = rq::checkLengths("point", shared_, getPointCount());
    if (fault.empty())
        fault = rq::checkLengths("vertex", vertex_, getVertexCount());
    if (fault.empty())
        fault = rq::checkLengths("uniform", uniform_, getCellCount());
    if (fault.empty())
        fault = rq::checkLengths("detail", detail_, 1);
    if (why)
        *why = fault;
    return fault.empty();
}

int RQ_PrimCellMesh::getCornerCount() const { return kind().corners; }
int64_t RQ_PrimCellMesh::getPointCount() const { return rq::entriesOf(shared_); }

RQ_PolygonMeshHandle RQ_PrimCellMesh::getOuterFaces() const
{
    if (getCellCount() == 0)
        return nullptr;
    const auto find = [this] { return kind().findOuterFaces(*vertexList_, getPointCount()); };
    const rq::Positions positions(shared_ ? shared_->get("P") : nullptr);
    const rq::OuterFacesHandle faces = kind().turnOutward(&outer_->faces.getOrBuild(find), *vertexList_, positions);
    const auto viewed = [](const RQ_AttributeListHandle &list, const RQ_DataArrayHandle &sources) {
        return list ? list->createIndirect(sources, true) : nullptr;
    };
    const RQ_PolygonMeshHandle mesh(new RQ_PrimPolygonMesh(faces->counts, faces->vertexList, shared_,
                                                           viewed(vertex_, faces->sourceVertex),
                                                           viewed(uniform_, faces->sourceCell), detail_));
    mesh->refineCopyTransformFrom(*this);
    return mesh;
}

bool RQ_PrimCellMesh::refine(RQ_Refine &sink, const RQ_RefineParms *parms) const
{
    RQ_PolygonMeshHandle mesh = getOuterFaces();
    if (!mesh)
        return false;
    bool changed = false;
    if (RQ_RefineParms::getAddVertexNormals(parms))
        mesh = mesh->createVertexNormalsIfMissing("P", RQ_RefineParms::getCuspAngle(parms), true, changed);
    if (mesh && RQ_RefineParms::getAddMikkT(parms))
        mesh = mesh->createTangentsIfMissing(changed);
    if (!mesh)
        return false;
    BAS_Array<RQ_PrimitiveHandle> pieces;
    if (!mesh->splitMesh(RQ_RefineParms::getMaxPolyMeshSize(parms), pieces) && mesh->getFaceCount() > 0)
        pieces.push_back(mesh);
    for (const RQ_PrimitiveHandle &piece : pieces)
        sink.addPrimitive(piece);
    return true;
}

RQ_CellMeshHandle RQ_PrimCellMesh::removeUnusedPoints() const
{
    RQ_CellMeshHandle same(const_cast<RQ_PrimCellMesh *>(this));
    if (!shared_ || !vertexList_)
        return same;
    const rq::UsedPoints used(*vertexList_, getPointCount());
    if (used.count() == used.points())
        return same;
    const rq::KeptPoints kept = rq::keepUsedPoints(used, vertexList_, shared_);
    const RQ_CellMeshHandle mesh = copy();
    mesh->init(kept.vertexList, kept.shared, vertex_, uniform_, detail_);
    return mesh;
}

RQ_CellMeshHandle RQ_PrimCellMesh::withAttributes(const RQ_AttributeListHandle &shared, const RQ_AttributeListHandle &vertex,
                                                  const RQ_AttributeListHandle &uniform,
                                                  const RQ_AttributeListHandle &detail) const
{
    const RQ_CellMeshHandle mesh = copy();
    mesh->shared_ = shared;
    mesh->vertex_ = vertex;
    mesh->uniform_ = uniform;
    mesh->detail_ = detail;
    mesh->dropDataIdHash();
    return mesh;
}

void RQ_PrimCellMesh::enlargeBounds(BAS_BoundingBox *boxes, int segments) const { enlargeP(boxes, segments, shared_); }

int RQ_PrimCellMesh::getMotionSegments() const
{
    return rq::motionSegments(*this, {&shared_, &vertex_, &uniform_, &detail_});
}

int64_t RQ_PrimCellMesh::getMemoryUsage() const
{
    int64_t bytes = int64_t(sizeof(*this)) + rq::memoryUsage({&shared_, &vertex_, &uniform_, &detail_});
    if (vertexList_)
        bytes += vertexList_->getMemoryUsage();
    if (outer_ && outer_->faces.get())
        bytes += outer_->faces.get()->getMemoryUsage();
    return bytes;
}

bool RQ_PrimCellMesh::save(BAS_JSONWriter &writer) const
{
    // Hexahedra are the type without a name.
    const bool isNamed = getPrimitiveType() != RQ_PRIM_HEX_MESH;
    const jsonWriter record(writer, isNamed ? RQprimitiveType(getPrimitiveType()) : className());
    return (vertexList_ ? vertexList_->save(*record, false) : record->beginArray() && record->endArray()) &&
           saveAttributeLists(*record);
}

RQ_PrimitiveHandle RQ_PrimCellMesh::doHarden() const
{
    const RQ_CellMeshHandle hard = copy();
    rq::hardenLists({&hard->shared_, &hard->vertex_, &hard->uniform_, &hard->detail_});
    if (hard->vertexList_)
        hard->vertexList_ = hard->vertexList_->harden();
    hard->dropDataIdHash();
    return hard;
}

RQ_PrimitiveHandle RQ_PrimCellMesh::doAttributeMerge(const RQ_Primitive &source, const BAS_StringMMPattern *vertex,
                                                     const BAS_StringMMPattern *point, const BAS_StringMMPattern *uniform,
                                                     const BAS_StringMMPattern *detail) const
{
    bool changed = false;
    const auto merged = [&](RQ_Owner owner, const BAS_StringMMPattern *pattern) {
        return mergeAttributeLists(changed, getAttributeList(owner), source.getAttributeList(owner), pattern, nullptr);
    };
    const RQ_AttributeListHandle vertices = merged(RQ_OWNER_VERTEX, vertex), points = merged(RQ_OWNER_POINT, point);
    const RQ_AttributeListHandle cells = merged(RQ_OWNER_UNIFORM, uniform), whole = merged(RQ_OWNER_DETAIL, detail);
    if (!changed)
        return const_cast<RQ_PrimCellMesh *>(this);
    return withAttributes(points, vertices, cells, whole);
}

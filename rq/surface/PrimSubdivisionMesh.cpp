#include <rq/surface/PrimSubdivisionMesh.h>

#include <rq/prim/PrimitiveJSON.h>
#include <rq/prim/PrimitiveType.h>
#include <rq/surface/detail/lists.h>

RQ_PrimSubdivisionMesh::RQ_PrimSubdivisionMesh() = default;

RQ_PrimSubdivisionMesh::RQ_PrimSubdivisionMesh(const RQ_PrimPolygonMesh &mesh, RQ_Scheme scheme)
    : RQ_PrimPolygonMesh(mesh), scheme_(scheme)
{}

RQ_PrimSubdivisionMesh::RQ_PrimSubdivisionMesh(const RQ_DataArrayHandle &counts, const RQ_DataArrayHandle &vertexList,
                                               const RQ_AttributeListHandle &shared, const RQ_AttributeListHandle &vertex,
                                               const RQ_AttributeListHandle &uniform, const RQ_AttributeListHandle &detail,
                                               RQ_Scheme scheme, RQ_IndexingMode mode, int64_t minCount, int64_t maxCount)
    : RQ_PrimPolygonMesh(counts, vertexList, shared, vertex, uniform, detail, mode, minCount, maxCount), scheme_(scheme)
{}

RQ_PrimSubdivisionMesh::RQ_PrimSubdivisionMesh(const RQ_CountArray &counts, const RQ_DataArrayHandle &vertexList,
                                               const RQ_AttributeListHandle &shared, const RQ_AttributeListHandle &vertex,
                                               const RQ_AttributeListHandle &uniform, const RQ_AttributeListHandle &detail,
                                               RQ_Scheme scheme)
    : RQ_PrimPolygonMesh(counts, vertexList, shared, vertex, uniform, detail), scheme_(scheme)
{}

RQ_PrimSubdivisionMesh::RQ_PrimSubdivisionMesh(const RQ_PrimSubdivisionMesh &other) = default;

// Other attributes of the mesh's own are not those that stood in for them.
RQ_PrimSubdivisionMesh::RQ_PrimSubdivisionMesh(const RQ_PrimSubdivisionMesh &other, const RQ_AttributeListHandle &shared,
                                               const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform,
                                               const RQ_AttributeListHandle &detail)
    : RQ_PrimPolygonMesh(other, shared, vertex, uniform, detail)
{
    copySubd(other);
}

RQ_PrimSubdivisionMesh::~RQ_PrimSubdivisionMesh() = default;

void RQ_PrimSubdivisionMesh::copySubd(const RQ_PrimSubdivisionMesh &source)
{
    scheme_ = source.scheme_;
    tags_ = source.tags_;
}

void RQ_PrimSubdivisionMesh::overrideAttributes(const RQ_AttributeListHandle &shared, const RQ_AttributeListHandle &vertex)
{
    overrideShared_ = shared;
    overrideVertex_ = vertex;
    overridden_ = true;
}

void RQ_PrimSubdivisionMesh::clearOverrideAttributes()
{
    overrideShared_.reset();
    overrideVertex_.reset();
    overridden_ = false;
}

RQ_PolygonMeshHandle RQ_PrimSubdivisionMesh::refineToHull() const
{
    return new RQ_PrimPolygonMesh(*this, surfaceShared(), surfaceVertex(), getUniform(), getDetail());
}

bool RQ_PrimSubdivisionMesh::refine(RQ_Refine &sink, const RQ_RefineParms *) const
{
    sink.addPrimitive(refineToHull());
    return true;
}

RQ_SubdivisionMeshHandle RQ_PrimSubdivisionMesh::triangulate() const
{
    return boost::static_pointer_cast<RQ_PrimSubdivisionMesh>(convex(3, true));
}

RQ_PolygonMeshHandle RQ_PrimSubdivisionMesh::createPointNormalsIfMissing(const char *positions, bool normalize,
                                                                         bool *changed) const
{
    bool unasked = false;
    return createPointNormalsIfMissing(positions, normalize, changed ? *changed : unasked);
}

const char *RQ_PrimSubdivisionMesh::className() const { return "RQ_PrimSubdivisionMesh"; }
int RQ_PrimSubdivisionMesh::getPrimitiveType() const { return RQ_PRIM_SUBDIVISION_MESH; }

int64_t RQ_PrimSubdivisionMesh::getMemoryUsage() const
{
    int64_t bytes = RQ_PrimPolygonMesh::getMemoryUsage() + int64_t(sizeof(*this) - sizeof(RQ_PrimPolygonMesh));
    for (const Tag &tag : tags_)
        bytes += tag.getMemoryUsage();
    for (const RQ_AttributeListHandle *list : {&overrideShared_, &overrideVertex_})
        if (*list)
            bytes += (*list)->getMemoryUsage();
    return bytes;
}

bool RQ_PrimSubdivisionMesh::save(BAS_JSONWriter &writer) const
{
    const jsonWriter record(writer, RQprimitiveType(RQ_PRIM_SUBDIVISION_MESH));
    bool done = saveFaces(*record) && record->beginMap();
    for (const Tag &tag : tags_)
        done = done && record->key(tag.name().view()) && tag.save(*record);
    return done && record->endMap() && saveListsAndSets(*record);
}

RQ_PrimitiveHandle RQ_PrimSubdivisionMesh::doHarden() const
{
    const RQ_PrimitiveHandle copy = RQ_PrimPolygonMesh::doHarden();
    auto &mesh = static_cast<RQ_PrimSubdivisionMesh &>(*copy);
    for (Tag &tag : mesh.tags_)
        tag.harden();
    if (overridden_)
    {
        mesh.overrideAttributes(overrideShared_, overrideVertex_);
        rq::hardenLists({&mesh.overrideShared_, &mesh.overrideVertex_});
    }
    return copy;
}

RQ_PrimitiveHandle RQ_PrimSubdivisionMesh::doSoftCopy() const { return new RQ_PrimSubdivisionMesh(*this); }

RQ_PolygonMeshHandle RQ_PrimSubdivisionMesh::clone(const RQ_DataArrayHandle &vertexList,
                                                   const RQ_AttributeListHandle &vertex) const
{
    return clone(vertexList, getShared(), vertex, getUniform(), getDetail());
}

RQ_PolygonMeshHandle RQ_PrimSubdivisionMesh::clone(const RQ_AttributeListHandle &shared,
                                                   const RQ_AttributeListHandle &vertex,
                                                   const RQ_AttributeListHandle &uniform,
                                                   const RQ_AttributeListHandle &detail) const
{
    return new RQ_PrimSubdivisionMesh(*this, shared, vertex, uniform, detail);
}

RQ_PolygonMeshHandle RQ_PrimSubdivisionMesh::clone(const RQ_CountArray &counts, const RQ_DataArrayHandle &vertexList,
                                                   const RQ_AttributeListHandle &shared,
                                                   const RQ_AttributeListHandle &vertex,
                                                   const RQ_AttributeListHandle &uniform,
                                                   const RQ_AttributeListHandle &detail) const
{
    const RQ_SubdivisionMeshHandle mesh(new RQ_PrimSubdivisionMesh(*this, shared, vertex, uniform, detail));
    mesh->init(counts, vertexList, shared, vertex, uniform, detail);
    return mesh;
}

RQ_PolygonMeshHandle RQ_PrimSubdivisionMesh::clone(const RQ_DataArrayHandle &vertexList,
                                                   const RQ_AttributeListHandle &shared,
                                                   const RQ_AttributeListHandle &vertex,
                                                   const RQ_AttributeListHandle &uniform,
                                                   const RQ_AttributeListHandle &detail) const
{
    const RQ_SubdivisionMeshHandle mesh(new RQ_PrimSubdivisionMesh(*this, shared, vertex, uniform, detail));
    mesh->setVertexList(vertexList);
    return mesh;
}

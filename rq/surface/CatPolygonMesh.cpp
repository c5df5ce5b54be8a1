#include <rq/surface/CatPolygonMesh.h>

#include <rq/prim/PrimitiveType.h>
#include <rq/surface/detail/subdivisionTags.h>

namespace
{
bool isEmpty(const RQ_AttributeListHandle &list) { return !list || list->entries() == 0; }

bool sameArrays(const RQ_AttributeListHandle &a, const RQ_AttributeListHandle &b, bool values)
{
    if (isEmpty(a) || isEmpty(b))
        return isEmpty(a) == isEmpty(b);
    if (!RQ_AttributeList::matchDefinition(a, b))
        return false;
    for (int i = 0; i < a->entries(); ++i)
    {
        const RQ_DataArrayHandle &first = a->get(i), &second = b->get(b->getIndex(a->getName(i)));
        if (!first || !second)
        {
            if (first || second)
                return false;
            continue;
        }
        if (first->getStorage() != second->getStorage() || first->getTupleSize() != second->getTupleSize() ||
            first->hasArrayEntries() != second->hasArrayEntries() || (values && !first->isEqual(*second)))
            return false;
    }
    return true;
}

/// The one value of a method tag as text, empty without.
std::string methodOf(const RQ_PrimSubdivisionMesh &mesh, const char *name)
{
    const RQ_PrimSubdivisionMesh::Tag *tag = mesh.findTag(name);
    if (!tag)
        return {};
    if (const RQ_DataArrayHandle text = tag->stringArray(0); text && text->entries() > 0)
        return std::string(text->getS(0).view());
    for (const RQ_DataArrayHandle &array : {tag->intArray(0), tag->realArray(0)})
        if (array && array->entries() > 0)
            return std::to_string(array->getI64(0));
    return {};
}

bool sameMethods(const RQ_PrimPolygonMesh &a, const RQ_PrimPolygonMesh &b)
{
    const auto *first = dynamic_cast<const RQ_PrimSubdivisionMesh *>(&a);
    const auto *second = dynamic_cast<const RQ_PrimSubdivisionMesh *>(&b);
    if (!first || !second)
        return !first && !second;
    bool same = first->scheme() == second->scheme();
    for (const char *name : rq::kMethodTags)
        same = same && methodOf(*first, name) == methodOf(*second, name);
    return same;
}
}  // namespace

RQ_CatPolygonMesh::RQ_CatPolygonMesh(bool mergeDetails, int64_t maxFaces, int64_t maxMeshes, int64_t maxMeshFaces)
    : mergeDetails_(mergeDetails), maxFaces_(maxFaces), maxMeshes_(maxMeshes), maxMeshFaces_(maxMeshFaces)
{}

RQ_CatPolygonMesh::RQ_CatPolygonMesh(const BAS_Array<RQ_PrimitiveHandle> &primitives, bool mergeDetails)
    : RQ_CatPolygonMesh(mergeDetails)
{
    for (const RQ_PrimitiveHandle &primitive : primitives)
        append(primitive);
}

bool RQ_CatPolygonMesh::matchAttributes(const RQ_PrimPolygonMesh &a, const RQ_PrimPolygonMesh &b, bool mergeDetails)
{
    return sameArrays(a.getShared(), b.getShared(), false) && sameArrays(a.getVertex(), b.getVertex(), false) &&
           sameArrays(a.getUniform(), b.getUniform(), false) &&
           (mergeDetails || sameArrays(a.getDetail(), b.getDetail(), true)) && sameMethods(a, b);
}

/// The primitive itself, or the mesh of one face that stands for a polygon; null for anything else.
RQ_PolygonMeshHandle RQ_CatPolygonMesh::asMesh(const RQ_PrimitiveHandle &primitive) const
{
    if (const auto *polygon = dynamic_cast<const RQ_PrimPolygon *>(primitive.get()))
        return new RQ_PrimPolygonMesh(*polygon);
    return boost::dynamic_pointer_cast<RQ_PrimPolygonMesh>(primitive);
}

// Place `replaced`, if it is one, counts as empty.
int RQ_CatPolygonMesh::refusal(const RQ_PrimitiveHandle &primitive, const RQ_PolygonMeshHandle &mesh, int64_t replaced) const
{
    const bool replaces = exists(replaced);
    if (maxMeshes_ > 0 && !replaces && entries() >= maxMeshes_)
        return MESH_LIMIT;
    if (!mesh || (!mesh->getVertexList() && mesh->getVertexCount() > 0))
        return NOT_A_MESH;
    if (mode_ != -1 && mode_ != mesh->getPrimitiveType())
        return KIND;
    const int64_t more = mesh->getFaceCount();
    const bool isPolygon = primitive->getPrimitiveType() == RQ_PRIM_POLYGON;
    if (!isPolygon && maxMeshFaces_ > 0 && more > maxMeshFaces_)
        return MESH_FACE_LIMIT;
    const int64_t less = replaces && meshes_[size_t(replaced)] ? meshes_[size_t(replaced)]->getFaceCount() : 0;
    if (maxFaces_ > 0 && faces_ - less + more > maxFaces_)
        return TOTAL_FACE_LIMIT;
    if (more == 0)
        return NO_FACES;
    for (int64_t i = 0; i < entries(); ++i)
        if (i != replaced && meshes_[size_t(i)])
            return matchAttributes(*meshes_[size_t(i)], *mesh, mergeDetails_) ? ACCEPTED : ATTRIBUTES;
    return ACCEPTED;
}

bool RQ_CatPolygonMesh::canAppend(const RQ_PrimitiveHandle &primitive, int &reason) const
{
    reason = refusal(primitive, asMesh(primitive), -1);
    return reason == ACCEPTED;
}

bool RQ_CatPolygonMesh::append(const RQ_PrimitiveHandle &primitive, const RQ_TransformHandle &transform)
{
    const RQ_PolygonMeshHandle mesh = asMesh(primitive);
    if (refusal(primitive, mesh, -1) != ACCEPTED)
        return false;
    meshes_.push_back(transform ? asMesh(mesh->copyTransformed(transform)) : mesh);
    faces_ += mesh->getFaceCount();
    mode_ = mesh->getPrimitiveType();
    return true;
}

RQ_PolygonMeshHandle RQ_CatPolygonMesh::getMesh(int64_t i) const { return exists(i) ? meshes_[size_t(i)] : nullptr; }

bool RQ_CatPolygonMesh::clearMesh(int64_t i)
{
    if (!exists(i))
        return false;
    if (meshes_[size_t(i)])
        faces_ -= meshes_[size_t(i)]->getFaceCount();
    meshes_[size_t(i)].reset();
    return true;
}

void RQ_CatPolygonMesh::clearAllMeshes()
{
    meshes_.clear();
    faces_ = 0;
    mode_ = -1;
}

bool RQ_CatPolygonMesh::remove(int64_t i)
{
    if (!clearMesh(i))
        return false;
    meshes_.erase(meshes_.begin() + i);
    if (meshes_.empty())
        clearAllMeshes();
    return true;
}

bool RQ_CatPolygonMesh::replace(int64_t i, const RQ_PrimitiveHandle &primitive)
{
    const RQ_PolygonMeshHandle mesh = asMesh(primitive);
    if (!exists(i) || refusal(primitive, mesh, i) != ACCEPTED)
        return false;
    clearMesh(i);
    meshes_[size_t(i)] = mesh;
    faces_ += mesh->getFaceCount();
    return true;
}

BAS_Array<RQ_PolygonMeshHandle> RQ_CatPolygonMesh::gathered() const
{
    BAS_Array<RQ_PolygonMeshHandle> meshes;
    for (const RQ_PolygonMeshHandle &mesh : meshes_)
        if (mesh)
            meshes.push_back(mesh);
    return meshes;
}

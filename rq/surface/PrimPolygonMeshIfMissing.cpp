#include <rq/surface/PrimPolygonMesh.h>

#include <initializer_list>
#include <vector>

#include <rq/surface/detail/tangentInput.h>

namespace
{
using Names = std::initializer_list<const char *>;

const RQ_DataArrayHandle &find(const RQ_AttributeListHandle &list, const char *name, int segment)
{
    static const RQ_DataArrayHandle none;
    return list ? list->get(name, segment) : none;
}

bool hasAnyOf(const RQ_PrimPolygonMesh &mesh, Names names)
{
    for (const char *name : names)
        if (find(mesh.getVertex(), name, 0) || find(mesh.getShared(), name, 0))
            return true;
    return false;
}

/// Whether a segment makes what the one before makes, since it has the same arrays.
bool isRepeated(const RQ_PrimPolygonMesh &mesh, int segment, Names inputs)
{
    for (const char *name : inputs)
        for (const RQ_AttributeListHandle *list : {&mesh.getVertex(), &mesh.getShared()})
            if (segment == 0 || find(*list, name, segment) != find(*list, name, segment - 1))
                return false;
    return true;
}

/// `list` with the normals of every motion segment under "N"; `make(segment)` builds an array, null where it cannot.  Null
/// when the first segment can have none; a later one then repeats the one before.
template <class Make>
RQ_AttributeListHandle withNormals(const RQ_PrimPolygonMesh &mesh, const RQ_AttributeListHandle &list, const char *positions,
                                   Make &&make)
{
    std::vector<RQ_DataArrayHandle> normals;
    for (int segment = 0; segment < mesh.getMotionSegments(); ++segment)
    {
        const RQ_DataArrayHandle made = isRepeated(mesh, segment, {positions}) ? nullptr : make(segment);
        if (!made && normals.empty())
            return nullptr;
        normals.push_back(made ? made : normals.back());
    }
    const RQ_AttributeListHandle base = list ? list : RQ_AttributeListHandle(new RQ_AttributeList(new RQ_AttributeMap, 1));
    return base->addAttribute("N", normals.data(), int(normals.size()), true);
}

/// Whether nothing but an interruption keeps tangents from being made.
bool canHaveTangents(const RQ_PrimPolygonMesh &mesh, int segment)
{
    return mesh.getVertexList() && rq::Positions(find(mesh.getShared(), "P", segment)).isValid() &&
           rq::CornerValues(mesh, "uv", segment).has(2);
}
}  // namespace

RQ_PolygonMeshHandle RQ_PrimPolygonMesh::createPointNormalsIfMissing(const char *positions, bool normalize,
                                                                     bool &changed) const
{
    changed = false;
    if (hasAnyOf(*this, {"N"}))
        return const_cast<RQ_PrimPolygonMesh *>(this);
    const RQ_AttributeListHandle shared = withNormals(*this, shared_, positions, [&](int segment) {
        return createPointNormals(segment, positions, normalize, nullptr, RQ_STORAGE_REAL32);
    });
    if (!shared)
        return const_cast<RQ_PrimPolygonMesh *>(this);
    changed = true;
    return clone(shared, vertex_, uniform_, detail_);
}

RQ_PolygonMeshHandle RQ_PrimPolygonMesh::createVertexNormalsIfMissing(const char *positions, double cuspAngle,
                                                                      bool normalize, bool &changed) const
{
    changed = false;
    if (hasAnyOf(*this, {"N"}))
        return const_cast<RQ_PrimPolygonMesh *>(this);
    const RQ_AttributeListHandle vertex = withNormals(*this, vertex_, positions, [&](int segment) {
        return createVertexNormals(segment, positions, cuspAngle, normalize, RQ_STORAGE_REAL32);
    });
    if (!vertex)
        return const_cast<RQ_PrimPolygonMesh *>(this);
    changed = true;
    return clone(shared_, vertex, uniform_, detail_);
}

RQ_PolygonMeshHandle RQ_PrimPolygonMesh::createTangentsIfMissing(bool &changed) const
{
    changed = false;
    const RQ_PolygonMeshHandle self = const_cast<RQ_PrimPolygonMesh *>(this);
    if (hasAnyOf(*this, {"tangentu", "tangentv"}))
        return self;
    std::vector<RQ_DataArrayHandle> tangentU, tangentV;
    for (int segment = 0; segment < getMotionSegments(); ++segment)
    {
        RQ_DataArrayHandle u = tangentU.empty() ? nullptr : tangentU.back();
        RQ_DataArrayHandle v = tangentV.empty() ? nullptr : tangentV.back();
        const bool isDone = isRepeated(*this, segment, {"P", "N", "uv"}) || makeTangents(segment, u, v);
        if (!isDone && canHaveTangents(*this, segment))
            return nullptr;
        if (!u)
            return self;
        tangentU.push_back(u);
        tangentV.push_back(v);
    }
    const RQ_AttributeListHandle base =
        vertex_ ? vertex_ : RQ_AttributeListHandle(new RQ_AttributeList(new RQ_AttributeMap));
    const int segments = int(tangentU.size());
    changed = true;
    return clone(shared_,
                 base->addAttribute("tangentu", tangentU.data(), segments, true)
                     ->addAttribute("tangentv", tangentV.data(), segments, true),
                 uniform_, detail_);
}

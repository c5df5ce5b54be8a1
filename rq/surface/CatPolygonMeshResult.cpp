#include <algorithm>
#include <limits>

#include <rq/attrib/AttributeMerge.h>
#include <rq/data/DANumeric.h>
#include <rq/data/Values.h>
#include <rq/surface/CatPolygonMesh.h>
#include <rq/surface/detail/subdivisionTags.h>

namespace
{
using Meshes = BAS_Array<RQ_PolygonMeshHandle>;

// Values that a transform moves are moved as the mesh is.
RQ_AttributeListHandle placed(const RQ_AttributeListHandle &list, const RQ_PrimPolygonMesh &mesh)
{
    const RQ_TransformHandle &transform = mesh.getPrimitiveTransform();
    return list && transform ? list->transform(transform) : list;
}

template <class ListOf> RQ_AttributeListHandle joined(const Meshes &meshes, ListOf &&listOf)
{
    BAS_Array<RQ_AttributeListHandle> lists;
    int segments = 1;
    for (const RQ_PolygonMeshHandle &mesh : meshes)
        if (const RQ_AttributeListHandle list = placed(listOf(*mesh), *mesh); list && list->entries() > 0)
        {
            lists.push_back(list);
            segments = std::max(segments, list->getSegments());
        }
    if (lists.empty())
        return nullptr;
    // The first list tells how many segments the joint one has.
    const RQ_AttributeListHandle longest(new RQ_AttributeList(lists[0]->getMap(), segments));
    for (int segment = 0; segment < segments; ++segment)
        longest->copySegment(segment, *lists[0], segment);
    lists[0] = longest;
    return RQ_AttributeList::concatenateLists(lists);
}

RQ_CountArray joinedCounts(const Meshes &meshes, int64_t faces)
{
    const int64_t first = meshes[0]->getMaxVertexCount();
    if (std::all_of(meshes.begin(), meshes.end(), [first](const RQ_PolygonMeshHandle &mesh) {
            return mesh->getFaceCountArray().isUniform() && mesh->getMaxVertexCount() == first;
        }))
        return RQ_CountArray(faces, first);
    const BAS_IntrusivePtr<RQ_DANumeric<int32_t>> counts(new RQ_DANumeric<int32_t>);
    counts->grow(faces);
    for (const RQ_PolygonMeshHandle &mesh : meshes)
        counts->concat(*mesh->getFaceCounts());
    return RQ_CountArray(counts);
}

template <class Index> RQ_DataArrayHandle joinedVertexLists(const Meshes &meshes)
{
    const BAS_IntrusivePtr<RQ_DANumeric<Index>> list(new RQ_DANumeric<Index>);
    int64_t points = 0;
    for (const RQ_PolygonMeshHandle &mesh : meshes)
    {
        const int64_t begin = list->entries();
        if (mesh->getVertexList())
            list->concat(*mesh->getVertexList());
        std::for_each(list->data() + begin, list->data() + list->entries(), [points](Index &row) { row += Index(points); });
        points += mesh->getPointCount();
    }
    return list;
}

RQ_FaceSetMapHandle joinedFaceSets(const Meshes &meshes)
{
    RQ_FaceSetMapHandle all;
    int64_t faces = 0;
    for (const RQ_PolygonMeshHandle &mesh : meshes)
    {
        if (mesh->faceSetMap())
        {
            if (!all)
                all = new RQ_FaceSetMap;
            for (auto at = mesh->faceSetMap()->begin(); !at.atEnd(); at.advance())
            {
                const RQ_FaceSetHandle set = all->add(at.name(), new RQ_FaceSet);
                for (const int64_t face : *at.faceSet())
                    set->addFace(faces + face);
            }
        }
        faces += mesh->getFaceCount();
    }
    return all;
}

/// One tag for all meshes; `startOf` is the number of a mesh's first point or face.
template <class CountOf>
void joinTag(const char *name, int width, const Meshes &meshes, CountOf &&countOf, RQ_PrimSubdivisionMesh &result)
{
    rq::ElementTag all;
    int64_t start = 0;
    for (const RQ_PolygonMeshHandle &mesh : meshes)
    {
        auto tag = rq::ElementTag::read(static_cast<const RQ_PrimSubdivisionMesh &>(*mesh).findTag(name), width);
        const int64_t count = countOf(*mesh);
        tag.rename(width, [=](int64_t index) { return index >= 0 && index < count ? start + index : -1; });
        // What has no sharpness is not sharp beside what has one.
        if (!all.sharpnesses.empty() || !tag.sharpnesses.empty())
        {
            all.sharpnesses.resize(all.indices.size() / size_t(width), 0.0);
            tag.sharpnesses.resize(tag.indices.size() / size_t(width), 0.0);
        }
        all.indices.insert(all.indices.end(), tag.indices.begin(), tag.indices.end());
        all.sharpnesses.insert(all.sharpnesses.end(), tag.sharpnesses.begin(), tag.sharpnesses.end());
        start += count;
    }
    if (!all.indices.empty())
        all.write(result.findOrCreateTag(name));
}

RQ_SubdivisionMeshHandle withTags(const RQ_PolygonMeshHandle &joint, const Meshes &meshes)
{
    const auto &first = static_cast<const RQ_PrimSubdivisionMesh &>(*meshes[0]);
    const RQ_SubdivisionMeshHandle result(new RQ_PrimSubdivisionMesh(*joint, first.scheme()));
    const auto points = [](const RQ_PrimPolygonMesh &mesh) { return mesh.getPointCount(); };
    const auto faces = [](const RQ_PrimPolygonMesh &mesh) { return mesh.getFaceCount(); };
    joinTag(rq::kCreaseTag, 2, meshes, points, *result);
    joinTag(rq::kCornerTag, 1, meshes, points, *result);
    joinTag(rq::kHoleTag, 1, meshes, faces, *result);
    for (const char *name : rq::kMethodTags)
        if (const RQ_PrimSubdivisionMesh::Tag *tag = first.findTag(name))
            result->appendTag(*tag);
    return result;
}
}  // namespace

RQ_AttributeListHandle RQ_CatPolygonMesh::mergeDetailLists(const Meshes &meshes)
{
    const auto mapOf = [](const RQ_AttributeListHandle &list) { return list ? list->getMap() : nullptr; };
    RQ_AttributeListHandle all;
    int64_t faces = 0;
    for (const RQ_PolygonMeshHandle &mesh : meshes)
    {
        const int64_t more = mesh->getFaceCount();
        const RQ_AttributeListHandle list = placed(mesh->getDetail(), *mesh);
        all = faces == 0 ? RQ_AttributeList::createConstantMerge({mapOf(list), nullptr}, list, more)
                         : RQ_AttributeList::expandConstantMerge({mapOf(all), mapOf(list)}, all, list, more, faces);
        if (!all)
            return nullptr;
        faces += more;
    }
    return all;
}

void RQ_CatPolygonMesh::result(RQ_PrimCollect &collect) const
{
    const Meshes meshes = gathered();
    if (meshes.empty())
        return;
    if (meshes.size() == 1)
        return collect.appendPrimitive(meshes[0]);

    const bool sameDetails = std::all_of(meshes.begin(), meshes.end(), [&](const RQ_PolygonMeshHandle &mesh) {
        return matchAttributes(*meshes[0], *mesh, false);
    });
    int64_t points = 0;
    for (const RQ_PolygonMeshHandle &mesh : meshes)
        points += mesh->getPointCount();
    const RQ_AttributeListHandle shared = joined(meshes, [](const auto &mesh) { return mesh.getShared(); });
    const RQ_AttributeListHandle vertex = joined(meshes, [](const auto &mesh) { return mesh.getVertex(); });
    RQ_AttributeListHandle uniform = joined(meshes, [](const auto &mesh) { return mesh.getUniform(); });
    if (!sameDetails)
    {
        const RQ_AttributeListHandle details = mergeDetailLists(meshes);
        uniform = uniform ? uniform->mergeNewAttributes(details) : details;
    }
    const RQ_DataArrayHandle list = points > std::numeric_limits<int32_t>::max() ? joinedVertexLists<int64_t>(meshes)
                                                                                 : joinedVertexLists<int32_t>(meshes);
    const RQ_PolygonMeshHandle joint(new RQ_PrimPolygonMesh(joinedCounts(meshes, faces_), list, shared, vertex, uniform,
                                                            sameDetails ? meshes[0]->getDetail() : nullptr));
    joint->setFaceSetMap(joinedFaceSets(meshes));
    const bool tagged = dynamic_cast<const RQ_PrimSubdivisionMesh *>(meshes[0].get()) != nullptr;
    collect.appendPrimitive(tagged ? RQ_PolygonMeshHandle(withTags(joint, meshes)) : joint);
}

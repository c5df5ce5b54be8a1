#include <algorithm>
#include <limits>
#include <new>

#include <fmt/format.h>

#include <rq/data/DAIndirect.h>
#include <rq/data/DANumeric.h>
#include <rq/data/Values.h>
#include <rq/subd/detail/topologyData.h>

namespace
{
bool isSmooth(const RQ_DataArray &array) { return RQisFloat(array.getStorage()) && !array.hasArrayEntries(); }

/// A list whose arrays are made by `make(index, array)`, once for the segments that share one.
template <class Make> RQ_AttributeListHandle refined(const RQ_AttributeListHandle &list, Make &&make)
{
    if (!list)
        return nullptr;
    const RQ_AttributeListHandle result(new RQ_AttributeList(list->getMap(), list->getSegments()));
    for (int i = 0; i < list->entries(); ++i)
        for (int segment = 0; segment < list->getSegments(); ++segment)
        {
            const RQ_DataArrayHandle &array = list->get(i, segment);
            const bool shared = segment > 0 && array == list->get(i, segment - 1);
            if (array)
                result->set(i, shared ? result->get(i, segment - 1) : make(i, array), segment);
        }
    return result;
}

/// True when all arrays of a list have as many entries as the topology asks for.
bool hasEntries(const RQ_AttributeListHandle &list, int64_t expected)
{
    if (list)
        for (int segment = 0; segment < list->getSegments(); ++segment)
            for (auto at = list->begin(segment); !at.atEnd(); ++at)
                if (at.getData() && at.getData()->entries() != expected)
                    return false;
    return true;
}

/// The mesh without the faces that became of holes, and without the points that only these used.
RQ_PolygonMeshHandle withoutHoles(const RQ_PolygonMeshHandle &mesh, const rq::UniformLevels &levels,
                                  const std::vector<int32_t> &holes)
{
    const rq::Values<int32_t> sources(levels.sourceFaces());
    const BAS_IntrusivePtr<RQ_DANumeric<int32_t>> kinds(new RQ_DANumeric<int32_t>(sources.entries()));
    for (int64_t face = 0; face < sources.entries(); ++face)
        kinds->set(face, std::binary_search(holes.begin(), holes.end(), sources[face]) ? -1 : 0);
    BAS_Array<RQ_PrimitiveHandle> parts;
    BAS_Array<int64_t> ids;
    mesh->partitionByMaterial(kinds, parts, &ids);
    const auto kept = std::find(ids.begin(), ids.end(), 0);
    if (kept == ids.end())
        return new RQ_PrimPolygonMesh;
    return boost::static_pointer_cast<RQ_PrimPolygonMesh>(parts[size_t(kept - ids.begin())]);
}
}  // namespace

RQ_PolygonMeshHandle RQ_SubdTopology::refine(const RQ_PrimSubdivisionMesh &mesh, int level, std::string *why) const
try
{
    const auto fail = [why](std::string reason) {
        if (why)
            *why = std::move(reason);
        return RQ_PolygonMeshHandle();
    };
    if (level == 0)
        return mesh.refineToHull();
    if (level < 0 || level > Data::kDeepestLevel)
        return fail(fmt::format("level {} is not 0 to {}", level, Data::kDeepestLevel));
    if (!fits(mesh) || !hasEntries(mesh.surfaceShared(), data_->meshPoints) ||
        !hasEntries(mesh.surfaceVertex(), mesh.getVertexCount()))
        return fail("the mesh is not of this topology");

    // Every corner of the cage becomes a face; points and corners must fit 32-bit numbers, and so must those of the level.
    const rq::Cage &cage = data_->cage;
    const int64_t faces = int64_t(cage.points.size()) << (2 * (level - 1));
    if (4 * faces > std::numeric_limits<int32_t>::max())
        return fail(fmt::format("level {} of {} faces would have {} faces, too many to number", level, cage.faces(), faces));

    const rq::UniformLevels &levels = data_->levels[size_t(level)].getOrBuild(
        [&] { return BAS_IntrusivePtr<const rq::UniformLevels>(new rq::UniformLevels(cage, *data_->refiner, level)); });
    RQ_AttributeListHandle points = mesh.surfaceShared();
    if (points && data_->usedPoints)
        points = points->createIndirect(data_->usedPoints);
    const RQ_AttributeListHandle &corners = mesh.surfaceVertex();
    const RQ_AttributeListHandle shared = refined(points, [&](int, const RQ_DataArrayHandle &array) {
        return isSmooth(*array) ? levels.interpolatePoints(*array)
                                : RQ_DAIndirect::createIndirect(array, levels.sourcePoints());
    });
    const RQ_AttributeListHandle vertex = refined(corners, [&](int i, const RQ_DataArrayHandle &array) {
        return isSmooth(*array) ? levels.interpolateCorners(corners->getName(i), *array)
                                : RQ_DAIndirect::createIndirect(array, levels.sourceCorners());
    });
    const RQ_AttributeListHandle uniform = mesh.getUniform() && mesh.getUniform()->entries() > 0
                                               ? mesh.getUniform()->createIndirect(levels.sourceFaces(), true)
                                               : mesh.getUniform();
    RQ_PolygonMeshHandle result(new RQ_PrimPolygonMesh(RQ_CountArray(levels.size().faces, levels.corners()),
                                                       levels.vertexList(), shared, vertex, uniform, mesh.getDetail()));
    if (mesh.faceSetMap())
        result->setFaceSetMap(mesh.faceSetMap()->followFaces(levels.sourceFaces()));
    if (!data_->holes.empty())
        result = withoutHoles(result, levels, data_->holes);
    result->refineCopyTransformFrom(mesh);
    if (mesh.isFrameInfoAvailable())
        result->setStaticGeometry(mesh.isStaticGeometry());
    return result;
}
catch (const std::bad_alloc &)
{
    if (why)
        *why = "memory does not suffice";
    return nullptr;
}

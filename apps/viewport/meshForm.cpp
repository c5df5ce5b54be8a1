#include <apps/viewport/Form.h>

#include <algorithm>
#include <limits>

#include <fmt/format.h>

#include <host/bas/Parallel.h>
#include <rq/bridge/RefineCache.h>
#include <rq/data/DANumeric.h>
#include <rq/data/Values.h>

namespace rq::viewport
{
namespace
{
// Meshes of more corners have facets of about a pixel: normals would take longer to make than the picture.
constexpr int64_t kDenseCorners = 3000000;

// A triangle costs about 10 ns.
constexpr int64_t kTrianglesPerTask = 8192;

// Which edges of the triangles were edges of the faces that were cut.
RQ_DataArrayHandle faceEdges(const RQ_PrimPolygonMesh &mesh, const RQ_ConvexArrays &cut)
{
    const Values<int32_t> sources(cut.sourceVertex), faces(cut.sourceFace);
    const BAS_IntrusivePtr<RQ_DANumeric<uint8_t>> edges(new RQ_DANumeric<uint8_t>(faces.size()));
    host::parallelFor(faces.size(), kTrianglesPerTask, [&](int64_t triangle) {
        const auto [offset, count] = mesh.getFaceCountArray().getOffsetCount(faces[triangle]);
        uint8_t bits = 0;
        for (int i = 0; i < 3; ++i)
        {
            const int64_t from = sources[3 * triangle + i], to = sources[3 * triangle + (i + 1) % 3];
            if (to == offset + (from + 1 - offset) % count)
                bits = uint8_t(bits | 1 << i);
        }
        edges->data()[triangle] = bits;
    });
    return edges;
}

bool cutToTriangles(const RQ_PrimPolygonMesh &mesh, const FormHandle &alike, RQ_RefineCache *cache, Form &form,
                    std::string &why)
{
    form.corners = mesh.getVertexList();
    form.elements = mesh.getFaceCount();
    if (mesh.getMinVertexCount() == 3 && mesh.getMaxVertexCount() == 3)
        return true;
    form.topology = topologyKey(mesh);
    if (alike)
    {
        form.corners = alike->corners;
        form.cornerSources = alike->cornerSources;
        form.faceSources = alike->faceSources;
        form.edges = alike->edges;
        form.elements = alike->elements;
        return true;
    }
    RQ_ConvexArrays cut;
    if (!(cache ? cache->convexArrays(mesh, cut, 3) : mesh.getConvexArrays(cut, 3)))
    {
        why = "polygons that could not be cut into triangles";
        return false;
    }
    form.corners = cut.vertexList;
    form.cornerSources = cut.sourceVertex;
    form.faceSources = cut.sourceFace;
    form.elements = cut.sourceFace->entries();
    form.edges = faceEdges(mesh, cut);
    return true;
}

// A mesh's own normals, unless they are of no use.
RQ_DataArrayHandle ownNormals(const RQ_PrimPolygonMesh &mesh, RQ_Owner &owner)
{
    const RQ_DataArrayHandle &array = mesh.findAttribute("N", owner, 0);
    return array && RQisNumeric(array->getStorage()) && !array->hasArrayEntries() && array->getTupleSize() >= 3 ? array
                                                                                                                : nullptr;
}

void chooseNormals(const RQ_PrimPolygonMesh &mesh, const Preparation &preparation, RQ_RefineCache *cache, Form &form)
{
    const Shading shading = preparation.shading;
    if (shading == Shading::Flat)
        return;
    if (shading != Shading::Cusp)
        form.normals = ownNormals(mesh, form.normalsOwner);
    if (form.normals || (shading == Shading::Auto && mesh.getVertexCount() > kDenseCorners))
        return;
    const bool byPoint = shading == Shading::Smooth;
    form.normalsOwner = byPoint ? RQ_OWNER_POINT : RQ_OWNER_VERTEX;
    form.normals = byPoint ? mesh.createPointNormals(0, "P", true, nullptr, RQ_STORAGE_REAL32)
                   : cache ? cache->vertexNormals(mesh, 0, preparation.cuspDegrees)
                           : mesh.createVertexNormals(0, "P", preparation.cuspDegrees, true, RQ_STORAGE_REAL32);
}

// Later names give way to earlier ones.
RQ_DataArrayHandle faceSetPlaces(const RQ_PrimPolygonMesh &mesh)
{
    std::vector<std::pair<BAS_StringHolder, RQ_FaceSetHandle>> sets;
    for (auto set = mesh.faceSetMap()->begin(); !set.atEnd(); set.advance())
        sets.emplace_back(set.name(), set.faceSet());
    std::sort(sets.begin(), sets.end(), [](const auto &a, const auto &b) { return b.first < a.first; });
    const BAS_IntrusivePtr<RQ_DANumeric<float>> places(new RQ_DANumeric<float>(mesh.getFaceCount()));
    std::fill_n(places->data(), mesh.getFaceCount(), -1.0f);
    for (size_t i = 0; i < sets.size(); ++i)
        for (const int64_t face : *sets[i].second)
            if (face < mesh.getFaceCount())
                places->data()[face] = float(sets.size() - 1 - i);
    return places;
}
}  // namespace

FormHandle makeMeshForm(const RQ_PrimPolygonMesh &mesh, const Preparation &preparation, uint64_t key,
                        const FormHandle &alike, RQ_RefineCache *cache, std::string &why)
{
    const auto form = std::make_shared<Form>();
    form->kind = FormKind::Triangles;
    form->key = key;
    form->positions = drawablePositions(mesh, RQ_OWNER_POINT);
    if (!form->positions)
        why = "a mesh without positions";
    if (mesh.getVertexCount() > std::numeric_limits<int32_t>::max())
        why = fmt::format("a mesh of {} corners: more than can be numbered", mesh.getVertexCount());
    if (!why.empty() || !mesh.validate(&why) || !cutToTriangles(mesh, alike, cache, *form, why))
        return nullptr;
    if (form->elements == 0)
    {
        why = "a mesh without faces";
        return nullptr;
    }
    chooseNormals(mesh, preparation, cache, *form);
    if (mesh.faceSetMap() && mesh.faceSetMap()->entries() > 0)
    {
        form->faceSetMap = mesh.faceSetMap();
        form->faceSets = faceSetPlaces(mesh);
    }
    return form;
}
}  // namespace rq::viewport

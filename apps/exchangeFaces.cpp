#include <apps/exchangeFaces.h>

#include <algorithm>
#include <cstdio>
#include <numeric>

#include <fmt/format.h>

#include <apps/FaceExchange.h>
#include <apps/preparedMesh.h>
#include <rq/bridge/MSHDetail.h>
#include <rq/prim/RefineList.h>
#include <rq/surface/PrimCellMesh.h>

namespace rq::app
{
namespace
{
// What stands for faces, besides polygons.
constexpr ELM_PrimitiveTypeId kShapes[] = {
    ELM_PRIMITIVE_GRID,           ELM_PRIMITIVE_NURBS_SURFACE,    ELM_PRIMITIVE_BEZIER_SURFACE,
    ELM_PRIMITIVE_CIRCLE,         ELM_PRIMITIVE_SPHERE,           ELM_PRIMITIVE_TUBE,
    ELM_PRIMITIVE_BLOB_ELLIPSOID, ELM_PRIMITIVE_BLOB_QUADRIC,     ELM_PRIMITIVE_BLOB_CAPSULE,
    ELM_PRIMITIVE_BLOB_BOX,       ELM_PRIMITIVE_BLOB_EXPRESSION,  ELM_PRIMITIVE_TRIANGLE_FAN,
    ELM_PRIMITIVE_TRIANGLE_STRIP, ELM_PRIMITIVE_TRIANGULAR_PATCH, ELM_PRIMITIVE_SOUP,
    ELM_PRIMITIVE_TETRAHEDRON,    ELM_PRIMITIVE_HEXAHEDRON,
};

bool isShape(ELM_PrimitiveTypeId type)
{
    return std::find(std::begin(kShapes), std::end(kShapes), type) != std::end(kShapes);
}

ELM_Range primitivesOf(const MSH_Detail &detail, Exchanged exchanged)
{
    const auto goes = [&](ELM_Offset primitive) {
        const ELM_PrimitiveTypeId type = detail.typeOf(primitive);
        return (exchanged.polygons && type == ELM_PRIMITIVE_POLYGON && detail.isClosed(primitive)) ||
               (exchanged.shapes && isShape(type));
    };
    const ELM_OffsetBitsHandle faces(new ELM_OffsetBits(detail.capacity(ELM_OWNER_PRIMITIVE)));
    for (const auto [begin, end] : detail.range(ELM_OWNER_PRIMITIVE).blocks())
        for (ELM_Offset primitive = begin; primitive < end; ++primitive)
            if (goes(primitive))
                faces->bits.set(primitive);
    return ELM_Range(ELM_OWNER_PRIMITIVE, faces);
}

void warnOfPacked(const MSH_Detail &detail, const std::string &file)
{
    int64_t packed = 0;
    for (int64_t i = 0; i < ELM_PrimitiveFactory::count(); ++i)
        if (const ELM_PrimitiveDefinition *type = ELM_PrimitiveFactory::at(i); type->isPacked)
            packed += detail.primitiveCount(type->id);
    if (packed > 0)
        fmt::print(stderr, "{}: warning: {} of packed geometry neither subdivided nor cut\n", file,
                   packed == 1 ? "1 primitive is" : fmt::format("{} primitives are", packed));
}

/// Append the faces that a primitive of the library stands for, if it stands for any.
void appendFaces(const RQ_PrimitiveHandle &primitive, const RQ_RefineParms &parms, std::vector<RQ_PolygonMeshHandle> &meshes)
{
    if (const auto mesh = boost::dynamic_pointer_cast<RQ_PrimPolygonMesh>(primitive))
        return meshes.push_back(mesh);
    if (const auto cells = boost::dynamic_pointer_cast<RQ_PrimCellMesh>(primitive))
        return meshes.push_back(cells->getOuterFaces()->removeUnusedPoints());
    RQ_RefineList list;
    list.refine(primitive.get(), &parms);
    for (int i = 0; i < list.entries(); ++i)
        appendFaces(list.getPrimitive(i), parms, meshes);
}

/// Number the primitives, for their faces to be known by.
MOD_ConstDetailHandle numbered(const MOD_DetailHandle &detail)
{
    MOD_Edit edit(detail);
    int32_t *sources = edit.attribute(ELM_OWNER_PRIMITIVE, kExchangeSource, ELM_STORAGE_INT32)->writeAll<int32_t>();
    std::iota(sources, sources + edit.capacity(ELM_OWNER_PRIMITIVE), 0);
    return edit.commit();
}
}  // namespace

bool hasShapes(const MSH_Detail &detail)
{
    return std::any_of(std::begin(kShapes), std::end(kShapes), [&](auto type) { return detail.primitiveCount(type) > 0; });
}

bool exchangeFaces(const MOD_DetailHandle &detail, Exchanged exchanged, const CommonOptions &options,
                   const std::string &file, std::string &error)
{
    const MOD_ConstDetailHandle before = numbered(detail);
    const MSH_Detail &from = *before.readLock();
    if (exchanged.polygons)
        warnOfPacked(from, file);
    const auto faces = std::make_shared<const ELM_Range>(primitivesOf(from, exchanged));
    RQ_RefineParms all;
    all.setSkipHidden(false);
    std::vector<RQ_PolygonMeshHandle> meshes;
    appendFaces(RQ_MSHDetail::makeDetail(before, faces), all, meshes);

    MOD_Edit edit(detail);
    FaceExchange exchange(from, edit);
    bool done = exchange.remove(*faces);
    for (const RQ_PolygonMeshHandle &mesh : meshes)
        done = done && exchange.append(*preparedMesh(mesh, options, file));
    if (done && exchange.finish(options.subdivide > 0))
    {
        edit.commit();
        return true;
    }
    error = edit.message();
    return false;
}
}  // namespace rq::app

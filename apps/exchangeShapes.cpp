#include <apps/exchangeShapes.h>

#include <algorithm>
#include <cstdio>
#include <numeric>

#include <fmt/format.h>

#include <apps/ShapeExchange.h>
#include <apps/preparedMesh.h>
#include <rq/bridge/MSHDetail.h>
#include <rq/prim/RefineList.h>
#include <rq/surface/PrimCellMesh.h>
#include <rq/surface/PrimCurveMesh.h>

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

// What stands for lines.
constexpr ELM_PrimitiveTypeId kCurves[] = {ELM_PRIMITIVE_NURBS_CURVE, ELM_PRIMITIVE_BEZIER_CURVE, ELM_PRIMITIVE_CHANNEL};

/// The types that give way whatever the primitive.
std::vector<ELM_PrimitiveTypeId> typesOf(Exchanged exchanged)
{
    std::vector<ELM_PrimitiveTypeId> types;
    if (exchanged.shapes)
        types.assign(std::begin(kShapes), std::end(kShapes));
    if (exchanged.curves)
        types.insert(types.end(), std::begin(kCurves), std::end(kCurves));
    return types;
}

bool hasAny(const MSH_Detail &detail, Exchanged exchanged)
{
    const std::vector<ELM_PrimitiveTypeId> types = typesOf(exchanged);
    return exchanged.polygons ||
           std::any_of(types.begin(), types.end(), [&](auto type) { return detail.primitiveCount(type) > 0; });
}

ELM_Range primitivesOf(const MSH_Detail &detail, Exchanged exchanged)
{
    const std::vector<ELM_PrimitiveTypeId> types = typesOf(exchanged);
    const auto goes = [&](ELM_Offset primitive) {
        const ELM_PrimitiveTypeId type = detail.typeOf(primitive);
        return (exchanged.polygons && type == ELM_PRIMITIVE_POLYGON && detail.isClosed(primitive)) ||
               std::find(types.begin(), types.end(), type) != types.end();
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

/// What primitives of the library stand for.
struct Pieces
{
    std::vector<RQ_PolygonMeshHandle> meshes;
    std::vector<RQ_CurveMeshHandle> lines;

    void append(const RQ_PrimitiveHandle &primitive, const RQ_RefineParms &parms)
    {
        if (const auto mesh = boost::dynamic_pointer_cast<RQ_PrimPolygonMesh>(primitive))
            return meshes.push_back(mesh);
        if (const auto cells = boost::dynamic_pointer_cast<RQ_PrimCellMesh>(primitive))
            return meshes.push_back(cells->getOuterFaces()->removeUnusedPoints());
        const auto curves = boost::dynamic_pointer_cast<RQ_PrimCurveMesh>(primitive);
        if (curves && curves->getBasis() == RQ_BASIS_LINEAR)
            return lines.push_back(curves);
        RQ_RefineList list;
        list.refine(primitive.get(), &parms);
        for (int i = 0; i < list.entries(); ++i)
            append(list.getPrimitive(i), parms);
    }
};

/// Number the primitives, for their faces to be known by.
MOD_ConstDetailHandle numbered(const MOD_DetailHandle &detail)
{
    MOD_Edit edit(detail);
    int32_t *sources = edit.attribute(ELM_OWNER_PRIMITIVE, kExchangeSource, ELM_STORAGE_INT32)->writeAll<int32_t>();
    std::iota(sources, sources + edit.capacity(ELM_OWNER_PRIMITIVE), 0);
    return edit.commit();
}
}  // namespace

bool exchangeShapes(const MOD_DetailHandle &detail, Exchanged exchanged, const CommonOptions &options,
                    const std::string &file, std::string &error)
{
    if (!hasAny(*detail.read().readLock(), exchanged))
        return true;
    const MOD_ConstDetailHandle before = numbered(detail);
    const MSH_Detail &from = *before.readLock();
    if (exchanged.polygons)
        warnOfPacked(from, file);
    const auto going = std::make_shared<const ELM_Range>(primitivesOf(from, exchanged));
    RQ_RefineParms all;
    all.setSkipHidden(false);
    Pieces pieces;
    pieces.append(RQ_MSHDetail::makeDetail(before, going), all);

    MOD_Edit edit(detail);
    ShapeExchange exchange(before, edit);
    bool done = exchange.remove(*going);
    for (const RQ_PolygonMeshHandle &mesh : pieces.meshes)
        done = done && exchange.append(*preparedMesh(mesh, options, file));
    for (const RQ_CurveMeshHandle &lines : pieces.lines)
        done = done && exchange.append(*lines);
    if (const int64_t lost = exchange.countLost(*going); done && lost > 0)
        fmt::print(stderr, "{}: warning: {} left out\n", file,
                   lost == 1 ? "1 primitive stands for no face or line and is"
                             : fmt::format("{} primitives stand for no face or line and are", lost));
    if (done && exchange.finish(options.subdivide > 0))
    {
        edit.commit();
        return true;
    }
    error = edit.message();
    return false;
}
}  // namespace rq::app

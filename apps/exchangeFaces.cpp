#include <apps/exchangeFaces.h>

#include <algorithm>
#include <cstdio>
#include <numeric>

#include <fmt/format.h>

#include <apps/preparedMesh.h>
#include <host/mod/Edit.h>
#include <host/msh/Detail.h>
#include <host/msh/Primitive.h>
#include <rq/bridge/MSHDetail.h>
#include <rq/data/NumericTypes.h>
#include <rq/data/Values.h>
#include <rq/prim/RefineList.h>
#include <rq/surface/PrimCellMesh.h>

namespace rq::app
{
namespace
{
// The primitive that a new face comes from, while the exchange goes on.
constexpr const char *kSource = "__source";

constexpr ELM_PrimitiveTypeId kCells[] = {ELM_PRIMITIVE_TETRAHEDRON, ELM_PRIMITIVE_HEXAHEDRON};

bool isCell(ELM_PrimitiveTypeId type) { return std::find(std::begin(kCells), std::end(kCells), type) != std::end(kCells); }

ELM_Range primitivesOf(const MSH_Detail &detail, Exchanged exchanged)
{
    const auto goes = [&](ELM_Offset primitive) {
        const ELM_PrimitiveTypeId type = detail.typeOf(primitive);
        return (exchanged.polygons && type == ELM_PRIMITIVE_POLYGON && detail.isClosed(primitive)) ||
               (exchanged.cells && isCell(type));
    };
    const ELM_OffsetBitsHandle faces(new ELM_OffsetBits(detail.capacity(ELM_OWNER_PRIMITIVE)));
    for (const auto [begin, end] : detail.range(ELM_OWNER_PRIMITIVE).blocks())
        for (ELM_Offset primitive = begin; primitive < end; ++primitive)
            if (goes(primitive))
                faces->bits.set(primitive);
    return ELM_Range(ELM_OWNER_PRIMITIVE, faces);
}

/// The points of some primitives that no other uses.
ELM_Range pointsOfOnly(const MSH_Detail &detail, const ELM_Range &primitives)
{
    const int64_t points = detail.capacity(ELM_OWNER_POINT);
    const ELM_OffsetBitsHandle own(new ELM_OffsetBits(points));
    BAS_BitArray others(points);
    for (const auto [begin, end] : detail.range(ELM_OWNER_PRIMITIVE).blocks())
        for (ELM_Offset offset = begin; offset < end; ++offset)
        {
            const MSH_Primitive primitive(detail, offset);
            BAS_BitArray &bits = primitives.contains(offset) ? own->bits : others;
            for (int64_t i = 0; i < primitive.vertexCount(); ++i)
                if (const ELM_Offset point = primitive.point(i); point >= 0)
                    bits.set(point);
        }
    for (int64_t i = 0; i < others.wordCount(); ++i)
        own->bits.words()[i] &= ~others.words()[i];
    return ELM_Range(ELM_OWNER_POINT, own);
}

/// Set the rows of an attribute of plain values from `first` on to the entries of an array.
void writeRows(ELM_Attribute &attribute, int64_t first, const RQ_DataArray &array)
{
    if (ELM_StringTuple *texts = attribute.strings())
    {
        for (int64_t i = 0; i < array.entries(); ++i)
            for (int component = 0; component < attribute.tupleSize(); ++component)
                if (const BAS_StringHolder text = array.getS(i, component); !text.isEmpty())
                    texts->set(first + i, text.view(), component);
        return;
    }
    dispatchStorage(RQ_Storage(int(attribute.storage())), [&](auto tag) {
        using T = typename decltype(tag)::type;
        const Values<T> values(array);
        if (values.tupleSize() == attribute.tupleSize())
            attribute.write(first, values.entries(), values.data());
    });
}

/// One exchange, on an edit of the detail that holds the faces.
class FaceExchange
{
public:
    FaceExchange(const MSH_Detail &from, MOD_Edit &edit) : from_(from), edit_(edit) {}

    bool removeFaces(const ELM_Range &faces)
    {
        const ELM_Range points = pointsOfOnly(from_, faces);
        return edit_.remove(faces) && edit_.remove(points) && edit_.compact();
    }

    bool append(const RQ_PrimPolygonMesh &mesh)
    {
        const int64_t point = edit_.pointCount(), vertex = edit_.vertexCount(), face = edit_.primitiveCount();
        const Values<int32_t> counts(mesh.getFaceCounts());
        std::vector<int64_t> corners(static_cast<size_t>(mesh.getVertexCount()));
        const Values<int64_t> points(mesh.getVertexList());
        std::transform(points.begin(), points.end(), corners.begin(), [=](int64_t i) { return point + i; });
        if (!edit_.appendPoints(mesh.getPointCount()) ||
            !edit_.appendPolygons({counts.data(), size_t(counts.entries())}, corners, true))
            return false;
        writeList(ELM_OWNER_POINT, mesh.getShared(), point);
        writeList(ELM_OWNER_VERTEX, mesh.getVertex(), vertex);
        writeList(ELM_OWNER_PRIMITIVE, mesh.getUniform(), face);
        joinGroups(*mesh.getUniform()->get(kSource), face);
        return true;
    }

    /// Drop what only helped, and what a surface does not have once its cage is gone: normals and tags.
    bool finish(bool subdivided)
    {
        bool done = edit_.removeAttribute(ELM_OWNER_PRIMITIVE, kSource);
        for (const auto &[owner, name] :
             {std::pair(ELM_OWNER_VERTEX, "N"), std::pair(ELM_OWNER_POINT, "N"), std::pair(ELM_OWNER_VERTEX, "crease"),
              std::pair(ELM_OWNER_POINT, "corner"), std::pair(ELM_OWNER_PRIMITIVE, "hole")})
            if (subdivided && from_.find(owner, ELM_SCOPE_PUBLIC, name))
                done = edit_.removeAttribute(owner, name) && done;
        return done;
    }

private:
    void writeList(ELM_Owner owner, const RQ_AttributeListHandle &list, int64_t first)
    {
        for (int i = 0; list && i < list->entries(); ++i)
        {
            const ELM_Attribute *like = from_.find(owner, ELM_SCOPE_PUBLIC, list->getName(i).view());
            if (!like || like->hasArrays() || like->dicts() || !list->get(i))
                continue;
            writeRows(like->strings() ? *edit_.stringAttribute(owner, like->name().view(), like->tupleSize())
                                      : *edit_.attribute(owner, like->name().view(), like->storage(), like->tupleSize(),
                                                         like->typeInfo()),
                      first, *list->get(i));
        }
    }

    void joinGroups(const RQ_DataArray &sources, int64_t first)
    {
        const ELM_GroupDict &groups = from_.groups(ELM_OWNER_PRIMITIVE);
        for (int64_t i = 0; i < groups.size(); ++i)
        {
            ELM_Group *group = edit_.group(ELM_OWNER_PRIMITIVE, groups[i].name().view());
            for (int64_t face = 0; face < sources.entries(); ++face)
                if (groups[i].contains(sources.getI64(face)))
                    group->set(first + face);
        }
    }

    const MSH_Detail &from_;
    MOD_Edit &edit_;
};

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

/// The faces that a primitive of the library stands for; null when it is of another kind.
RQ_PolygonMeshHandle facesOf(const RQ_PrimitiveHandle &primitive)
{
    if (const auto cells = boost::dynamic_pointer_cast<RQ_PrimCellMesh>(primitive))
        return cells->getOuterFaces()->removeUnusedPoints();
    return boost::dynamic_pointer_cast<RQ_PrimPolygonMesh>(primitive);
}

/// Number the primitives, for their faces to be known by.
MOD_ConstDetailHandle numbered(const MOD_DetailHandle &detail)
{
    MOD_Edit edit(detail);
    int32_t *sources = edit.attribute(ELM_OWNER_PRIMITIVE, kSource, ELM_STORAGE_INT32)->writeAll<int32_t>();
    std::iota(sources, sources + edit.capacity(ELM_OWNER_PRIMITIVE), 0);
    return edit.commit();
}
}  // namespace

bool hasCells(const MSH_Detail &detail)
{
    return std::any_of(std::begin(kCells), std::end(kCells), [&](auto type) { return detail.primitiveCount(type) > 0; });
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
    RQ_RefineList list;
    list.refine(RQ_MSHDetail::makeDetail(before, faces).get(), &all);

    MOD_Edit edit(detail);
    FaceExchange exchange(from, edit);
    bool done = exchange.removeFaces(*faces);
    for (int i = 0; done && i < list.entries(); ++i)
        if (const RQ_PolygonMeshHandle mesh = facesOf(list.getPrimitive(i)))
            done = exchange.append(*preparedMesh(mesh, options, file));
    if (done && exchange.finish(options.subdivide > 0))
    {
        edit.commit();
        return true;
    }
    error = edit.message();
    return false;
}
}  // namespace rq::app

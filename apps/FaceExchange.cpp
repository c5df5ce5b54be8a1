#include <apps/FaceExchange.h>

#include <algorithm>

#include <host/msh/Primitive.h>
#include <rq/data/DAIndirect.h>
#include <rq/data/DANumeric.h>
#include <rq/data/NumericTypes.h>
#include <rq/data/Values.h>

namespace rq::app
{
namespace
{
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

/// An attribute as every face of a mesh has it; null when it has none of the name.
RQ_DataArrayHandle ofFaces(const RQ_PrimPolygonMesh &mesh, const BAS_StringHolder &name)
{
    const auto read = [&](const RQ_AttributeListHandle &list) { return list ? list->get(name) : RQ_DataArrayHandle(); };
    if (const RQ_DataArrayHandle values = read(mesh.getUniform()))
        return values;
    const auto spread = [&](const RQ_DataArrayHandle &values, auto &&entryOf) {
        const BAS_IntrusivePtr<RQ_DANumeric<int64_t>> entries(new RQ_DANumeric<int64_t>(mesh.getFaceCount()));
        for (int64_t face = 0; face < mesh.getFaceCount(); ++face)
            entries->data()[face] = mesh.getFaceCountArray().getCount(face) > 0 ? entryOf(face) : -1;
        return RQ_DAIndirect::createIndirect(values, entries);
    };
    if (const RQ_DataArrayHandle values = read(mesh.getDetail()))
        return spread(values, [](int64_t) { return 0; });
    if (const RQ_DataArrayHandle values = read(mesh.getVertex()))
        return spread(values, [&](int64_t face) { return mesh.getVertexOffset(face); });
    if (const RQ_DataArrayHandle values = read(mesh.getShared()))
        return spread(values, [&](int64_t face) { return mesh.getPoint(face, 0); });
    return {};
}
}  // namespace

bool FaceExchange::remove(const ELM_Range &primitives)
{
    const ELM_Range points = pointsOfOnly(from_, primitives);
    return edit_.remove(primitives) && edit_.remove(points) && edit_.compact();
}

bool FaceExchange::append(const RQ_PrimPolygonMesh &mesh)
{
    const int64_t point = edit_.pointCount(), vertex = edit_.vertexCount(), face = edit_.primitiveCount();
    const Values<int32_t> counts(mesh.getFaceCounts());
    std::vector<int64_t> corners(static_cast<size_t>(mesh.getVertexCount()));
    const Values<int64_t> points(mesh.getVertexList());
    std::transform(points.begin(), points.end(), corners.begin(), [=](int64_t i) { return point + i; });
    if (!edit_.appendPoints(mesh.getPointCount()) ||
        !edit_.appendPolygons({counts.data(), size_t(counts.entries())}, corners, true))
        return false;
    for (const auto &[owner, list, first] :
         {std::tuple(ELM_OWNER_POINT, mesh.getShared(), point), std::tuple(ELM_OWNER_VERTEX, mesh.getVertex(), vertex)})
        for (int i = 0; list && i < list->entries(); ++i)
            if (list->get(i))
                write(owner, list->getName(i), *list->get(i), first);
    for (const ELM_Attribute &attribute : from_.attributes(ELM_OWNER_PRIMITIVE))
        if (const RQ_DataArrayHandle values = ofFaces(mesh, attribute.name()))
            write(ELM_OWNER_PRIMITIVE, attribute.name(), *values, face);
    if (const RQ_DataArrayHandle sources = ofFaces(mesh, kExchangeSource))
        joinGroups(*sources, face);
    return true;
}

void FaceExchange::write(ELM_Owner owner, const BAS_StringHolder &name, const RQ_DataArray &values, int64_t first)
{
    const ELM_Attribute *like = from_.find(owner, ELM_SCOPE_PUBLIC, name.view());
    if (!like || like->hasArrays() || like->dicts())
        return;
    writeRows(like->strings() ? *edit_.stringAttribute(owner, name.view(), like->tupleSize())
                              : *edit_.attribute(owner, name.view(), like->storage(), like->tupleSize(), like->typeInfo()),
              first, values);
}

void FaceExchange::joinGroups(const RQ_DataArray &sources, int64_t first)
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

bool FaceExchange::finish(bool subdivided)
{
    bool done = edit_.removeAttribute(ELM_OWNER_PRIMITIVE, kExchangeSource);
    for (const auto &[owner, name] :
         {std::pair(ELM_OWNER_VERTEX, "N"), std::pair(ELM_OWNER_POINT, "N"), std::pair(ELM_OWNER_VERTEX, "crease"),
          std::pair(ELM_OWNER_POINT, "corner"), std::pair(ELM_OWNER_PRIMITIVE, "hole")})
        if (subdivided && from_.find(owner, ELM_SCOPE_PUBLIC, name))
            done = edit_.removeAttribute(owner, name) && done;
    return done;
}
}  // namespace rq::app

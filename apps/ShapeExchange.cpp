#include <apps/ShapeExchange.h>

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

RQ_DataArrayHandle asIndices(const std::vector<int64_t> &entries)
{
    return new RQ_DANumeric<int64_t>(entries.data(), int64_t(entries.size()));
}
}  // namespace

/// Where the elements that are appended next will be.
struct ShapeExchange::Place
{
    explicit Place(const MOD_Edit &edit)
        : point(edit.pointCount()), vertex(edit.vertexCount()), primitive(edit.primitiveCount())
    {}

    int64_t point, vertex, primitive;
};

/// The first vertex of each piece of a mesh, and its point; 0 for pieces without vertices.
struct ShapeExchange::Starts
{
    explicit Starts(int64_t pieces) : vertices(size_t(pieces)), points(size_t(pieces)) {}

    std::vector<int64_t> vertices, points;
};

/// An attribute as every piece of a mesh has it; null when the mesh has none of the name.
RQ_DataArrayHandle ShapeExchange::ofPieces(const RQ_Primitive &mesh, const BAS_StringHolder &name, const Starts &starts)
{
    const auto find = [&](const RQ_AttributeListHandle &list) { return list ? list->get(name) : RQ_DataArrayHandle(); };
    if (const RQ_DataArrayHandle values = find(mesh.getUniformAttributes()))
        return values;
    const std::vector<int64_t> whole(starts.vertices.size());
    for (const auto &[list, entries] :
         {std::tie(mesh.getDetailAttributes(), whole), std::tie(mesh.getVertexAttributes(), starts.vertices),
          std::tie(mesh.getPointAttributes(), starts.points)})
        if (const RQ_DataArrayHandle values = find(list); values && values->entries() > 0)
            return RQ_DAIndirect::createIndirect(values, asIndices(entries));
    return {};
}

bool ShapeExchange::remove(const ELM_Range &primitives)
{
    const ELM_Range points = pointsOfOnly(from_, primitives);
    return edit_.remove(primitives) && edit_.remove(points) && edit_.compact();
}

bool ShapeExchange::append(const RQ_PrimPolygonMesh &mesh)
{
    const Place place(edit_);
    const Values<int32_t> counts(mesh.getFaceCounts());
    std::vector<int64_t> corners(static_cast<size_t>(mesh.getVertexCount()));
    const Values<int64_t> points(mesh.getVertexList());
    std::transform(points.begin(), points.end(), corners.begin(), [&](int64_t i) { return place.point + i; });
    if (!edit_.appendPoints(mesh.getPointCount()) ||
        !edit_.appendPolygons({counts.data(), size_t(counts.entries())}, corners, true))
        return false;

    writeList(ELM_OWNER_POINT, mesh.getShared(), place.point);
    writeList(ELM_OWNER_VERTEX, mesh.getVertex(), place.vertex);
    Starts starts(mesh.getFaceCount());
    for (int64_t face = 0; face < mesh.getFaceCount(); ++face)
        if (counts[face] > 0)
        {
            starts.vertices[size_t(face)] = mesh.getVertexOffset(face);
            starts.points[size_t(face)] = points[mesh.getVertexOffset(face)];
        }
    writePieces(mesh, starts, place.primitive);
    return true;
}

bool ShapeExchange::append(const RQ_PrimCurveMesh &lines)
{
    const Place place(edit_);
    // A closed line ends in the point where it began.
    std::vector<int32_t> counts;
    std::vector<int64_t> vertices, corners;
    Starts starts(lines.getCurveCount());
    for (int64_t curve = 0; curve < lines.getCurveCount(); ++curve)
    {
        const int64_t first = lines.getVertexOffset(curve), count = lines.getVertexCount(curve);
        if (count > 0)
            starts.vertices[size_t(curve)] = first;
        for (int64_t i = 0; i < count; ++i)
            vertices.push_back(first + i);
        const bool closes = lines.getWrap() && count > 0;
        if (closes)
            vertices.push_back(first);
        counts.push_back(int32_t(count + closes));
    }
    std::transform(vertices.begin(), vertices.end(), std::back_inserter(corners),
                   [&](int64_t i) { return place.point + i; });
    if (!edit_.appendPoints(lines.getVertexCount()) || !edit_.appendPolygons(counts, corners, false))
        return false;

    writeList(ELM_OWNER_POINT, lines.getVertex(), place.point);
    writeList(ELM_OWNER_VERTEX, lines.getVertex()->createIndirect(asIndices(vertices)), place.vertex);
    writePieces(lines, starts, place.primitive);
    return true;
}

void ShapeExchange::writeList(ELM_Owner owner, const RQ_AttributeListHandle &list, int64_t first)
{
    for (int i = 0; list && i < list->entries(); ++i)
        if (list->get(i))
            write(owner, list->getName(i), *list->get(i), first);
}

void ShapeExchange::writePieces(const RQ_Primitive &mesh, const Starts &starts, int64_t first)
{
    for (const ELM_Attribute &attribute : from_.attributes(ELM_OWNER_PRIMITIVE))
        if (const RQ_DataArrayHandle values = ofPieces(mesh, attribute.name(), starts))
            write(ELM_OWNER_PRIMITIVE, attribute.name(), *values, first);
    if (const RQ_DataArrayHandle sources = ofPieces(mesh, kExchangeSource, starts))
        joinGroups(*sources, first);
}

void ShapeExchange::write(ELM_Owner owner, const BAS_StringHolder &name, const RQ_DataArray &values, int64_t first)
{
    const ELM_Attribute *like = from_.find(owner, ELM_SCOPE_PUBLIC, name.view());
    if (!like || like->hasArrays() || like->dicts())
        return;
    writeRows(like->strings() ? *edit_.stringAttribute(owner, name.view(), like->tupleSize())
                              : *edit_.attribute(owner, name.view(), like->storage(), like->tupleSize(), like->typeInfo()),
              first, values);
}

void ShapeExchange::joinGroups(const RQ_DataArray &sources, int64_t first)
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

bool ShapeExchange::finish(bool subdivided)
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

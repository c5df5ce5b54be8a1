#include <apps/ShapeExchange.h>

#include <algorithm>

#include <host/msh/Primitive.h>
#include <rq/bridge/MSHElementArray.h>
#include <rq/data/DAConstant.h>
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

bool isPlain(const ELM_Attribute &attribute)
{
    return attribute.scope() == ELM_SCOPE_PUBLIC && !attribute.hasArrays() && !attribute.dicts();
}

/// Set the rows of an attribute of plain values from `first` on to the entries of an array of as many components.
void writeRows(ELM_Attribute &attribute, int64_t first, const RQ_DataArray &array)
{
    if (array.getTupleSize() != attribute.tupleSize())
        return;
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
        attribute.write(first, values.entries(), values.data());
    });
}

RQ_DataArrayHandle asIndices(const std::vector<int64_t> &entries)
{
    return new RQ_DANumeric<int64_t>(entries.data(), int64_t(entries.size()));
}

RQ_DataArrayHandle find(const RQ_AttributeListHandle &list, const BAS_StringHolder &name)
{
    return list ? list->get(name) : RQ_DataArrayHandle();
}

/// The primitive that each of the pieces of a mesh comes from; null where many melt together.
RQ_DataArrayHandle sourcesOf(const RQ_Primitive &mesh, int64_t pieces)
{
    if (const RQ_DataArrayHandle sources = find(mesh.getUniformAttributes(), kExchangeSource))
        return sources;
    return RQ_DAConstant::createConstant(find(mesh.getDetailAttributes(), kExchangeSource), 0, pieces);
}

// Those inside have no face.
bool isCell(ELM_PrimitiveTypeId type) { return type == ELM_PRIMITIVE_TETRAHEDRON || type == ELM_PRIMITIVE_HEXAHEDRON; }

bool isMetaball(ELM_PrimitiveTypeId type)
{
    return type >= ELM_PRIMITIVE_BLOB_ELLIPSOID && type <= ELM_PRIMITIVE_BLOB_EXPRESSION;
}
}  // namespace

ShapeExchange::ShapeExchange(const MOD_ConstDetailHandle &from, MOD_Edit &edit)
    : handle_(from), from_(*from.readLock()), edit_(edit), arrived_(from_.capacity(ELM_OWNER_PRIMITIVE))
{}

bool ShapeExchange::remove(const ELM_Range &primitives)
{
    const ELM_Range points = pointsOfOnly(from_, primitives);
    return edit_.remove(primitives) && edit_.remove(points) && edit_.compact();
}

bool ShapeExchange::append(const RQ_PrimPolygonMesh &mesh)
{
    const Place place(edit_);
    const int64_t faces = mesh.getFaceCount();
    const Values<int32_t> counts(mesh.getFaceCounts());
    const Values<int64_t> points(mesh.getVertexList());
    std::vector<int64_t> corners(static_cast<size_t>(mesh.getVertexCount()));
    std::transform(points.begin(), points.end(), corners.begin(), [&](int64_t i) { return place.point + i; });
    if (!edit_.appendPoints(mesh.getPointCount()) || !edit_.appendPolygons({counts.data(), size_t(faces)}, corners, true))
        return false;

    write(ELM_OWNER_POINT, place.point, mesh.getPointCount(), {{mesh.getShared(), nullptr}}, mesh.getDetail());
    write(ELM_OWNER_VERTEX, place.vertex, mesh.getVertexCount(),
          {{mesh.getVertex(), nullptr}, {mesh.getShared(), mesh.getVertexList()}}, mesh.getDetail());
    if (const RQ_DataArrayHandle sources = sourcesOf(mesh, faces))
    {
        writePieces(*sources, place.primitive);
        return true;
    }
    hasMolten_ = true;
    std::vector<int64_t> starts(static_cast<size_t>(faces));
    for (int64_t face = 0; face < faces; ++face)
        starts[size_t(face)] = counts[face] > 0 ? points[mesh.getVertexOffset(face)] : 0;
    write(ELM_OWNER_PRIMITIVE, place.primitive, faces, {{mesh.getShared(), asIndices(starts)}}, nullptr);
    return true;
}

bool ShapeExchange::append(const RQ_PrimCurveMesh &lines)
{
    const Place place(edit_);
    // A closed line ends in the point where it began.
    std::vector<int32_t> counts;
    std::vector<int64_t> vertices, corners;
    for (int64_t curve = 0; curve < lines.getCurveCount(); ++curve)
    {
        const int64_t first = lines.getVertexOffset(curve), count = lines.getVertexCount(curve);
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

    write(ELM_OWNER_POINT, place.point, lines.getVertexCount(), {{lines.getVertex(), nullptr}}, lines.getDetail());
    write(ELM_OWNER_VERTEX, place.vertex, int64_t(vertices.size()), {{lines.getVertex(), asIndices(vertices)}},
          lines.getDetail());
    if (const RQ_DataArrayHandle sources = sourcesOf(lines, lines.getCurveCount()))
        writePieces(*sources, place.primitive);
    return true;
}

// What a placed shape has of its point and vertex is told of the whole mesh that it becomes; but so is what the file tells.
void ShapeExchange::write(ELM_Owner owner, int64_t first, int64_t count, std::initializer_list<Rows> lists,
                          const RQ_AttributeListHandle &detail)
{
    for (const ELM_Attribute &attribute : from_.attributes(owner))
    {
        const BAS_StringHolder &name = attribute.name();
        RQ_DataArrayHandle values;
        for (const Rows &rows : lists)
            if (const RQ_DataArrayHandle found = values ? nullptr : find(rows.list, name); found && found->entries() > 0)
                values = rows.entries ? RQ_DAIndirect::createIndirect(found, rows.entries) : found;
        if (!values && !from_.find(ELM_OWNER_DETAIL, name.view()))
            values = RQ_DAConstant::createConstant(find(detail, name), 0, count);
        if (values && isPlain(attribute))
            writeRows(own(attribute), first, *values);
    }
}

void ShapeExchange::writePieces(const RQ_DataArray &sources, int64_t first)
{
    const Values<int64_t> offsets(sources);
    const RQ_MSHOffsetList rows(offsets.data(), offsets.entries());
    for (const ELM_Attribute &attribute : from_.attributes(ELM_OWNER_PRIMITIVE))
        if (isPlain(attribute))
        {
            const RQ_DataArrayHandle values(new RQ_MSHElementArray(handle_, &attribute, rows, ELM_OWNER_PRIMITIVE));
            writeRows(own(attribute), first, *values);
        }
    for (const int64_t source : offsets)
        arrived_.set(source);
    joinGroups(sources, first);
}

// The same attribute of the detail that is made.
ELM_Attribute &ShapeExchange::own(const ELM_Attribute &like)
{
    const std::string_view name = like.name().view();
    return like.strings() ? *edit_.stringAttribute(like.owner(), name, like.tupleSize())
                          : *edit_.attribute(like.owner(), name, like.storage(), like.tupleSize(), like.typeInfo());
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

int64_t ShapeExchange::countLost(const ELM_Range &primitives) const
{
    int64_t lost = 0;
    for (const auto [begin, end] : primitives.blocks())
        for (ELM_Offset primitive = begin; primitive < end; ++primitive)
        {
            const ELM_PrimitiveTypeId type = from_.typeOf(primitive);
            const bool hasArrived = isMetaball(type) ? hasMolten_ : arrived_.get(primitive);
            lost += type != ELM_PRIMITIVE_POLYGON && !isCell(type) && !hasArrived;
        }
    return lost;
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

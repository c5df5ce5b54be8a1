#include <apps/viewport/window/attributeTexts.h>

#include <algorithm>

#include <fmt/format.h>

#include <rq/surface/PrimCurveMesh.h>
#include <rq/surface/PrimPolygonMesh.h>
#include <rq/surface/PrimQuadricMesh.h>

namespace rq::viewport
{
namespace
{
constexpr int64_t kMostComponents = 16;

std::string componentText(const RQ_DataArray &array, int64_t entry, int component)
{
    switch (array.getStorage())
    {
    case RQ_STORAGE_REAL16:
    case RQ_STORAGE_REAL32:
    case RQ_STORAGE_REAL64:
        return fmt::format("{:.6g}", array.getF64(entry, component));
    case RQ_STORAGE_STRING:
        return fmt::format("\"{}\"", array.getS(entry, component).view());
    case RQ_STORAGE_DICTIONARY:
        return "{...}";
    default:
        return fmt::format("{}", array.getI64(entry, component));
    }
}

// Of an array of arrays, the length of an entry: its values are no tuple.
std::string entryText(const RQ_DataArray &array, int64_t entry)
{
    if (array.hasArrayEntries())
        return fmt::format(" {} values", array.itemSize(entry));
    std::string text;
    const int64_t size = array.getTupleSize();
    for (int64_t component = 0; component < std::min(size, kMostComponents); ++component)
        text.append(1, ' ').append(componentText(array, entry, int(component)));
    return size > kMostComponents ? text + " ..." : text;
}

bool hasColour(const RQ_DataArray &array)
{
    const RQ_Storage storage = array.getStorage();
    return storage >= RQ_STORAGE_UINT8 && storage <= RQ_STORAGE_STRING && !array.hasArrayEntries();
}
}  // namespace

std::vector<AttributeRow> attributesOf(const RQ_Primitive &primitive)
{
    std::vector<AttributeRow> rows;
    for (const RQ_Owner owner : {RQ_OWNER_VERTEX, RQ_OWNER_POINT, RQ_OWNER_UNIFORM, RQ_OWNER_DETAIL})
    {
        const RQ_AttributeListHandle &list = primitive.getAttributeList(owner);
        for (int i = 0; list && i < list->entries(); ++i)
            if (const RQ_DataArrayHandle &array = list->get(i))
                rows.push_back({owner, list->getName(i).c_str(), array});
    }
    return rows;
}

std::vector<AttributeRow> colourChoices(const std::vector<Emitted> &emitted)
{
    std::vector<AttributeRow> choices;
    const auto isLess = [](const AttributeRow &a, const AttributeRow &b) {
        return a.owner != b.owner ? a.owner < b.owner : a.name < b.name;
    };
    for (const Emitted &one : emitted)
        for (AttributeRow &row : attributesOf(*one.primitive))
            if (const auto at = std::lower_bound(choices.begin(), choices.end(), row, isLess);
                hasColour(*row.array) && (at == choices.end() || isLess(row, *at)))
                choices.insert(at, std::move(row));
    return choices;
}

std::string formOf(const RQ_DataArray &array)
{
    const char *storage = RQstorage(array.getStorage());
    return fmt::format("{} x {}", storage ? storage : "invalid", array.getTupleSize());
}

std::string firstValues(const RQ_DataArray &array, int64_t entries)
{
    std::string text;
    const int64_t shown = std::min(entries, array.entries());
    for (int64_t entry = 0; entry < shown; ++entry)
        text += fmt::format("{}{}:{}", text.empty() ? "" : "\n", entry, entryText(array, entry));
    if (shown < array.entries())
        text += fmt::format("{}{} more", text.empty() ? "" : "\n", array.entries() - shown);
    return text;
}

std::string sizeOf(const RQ_Primitive &primitive)
{
    if (const auto *mesh = dynamic_cast<const RQ_PrimPolygonMesh *>(&primitive))
        return fmt::format("{} faces, {} points", mesh->getFaceCount(), mesh->getPointCount());
    if (const auto *curves = dynamic_cast<const RQ_PrimCurveMesh *>(&primitive))
        return fmt::format("{} curves, {} vertices", curves->getCurveCount(), curves->getVertexCount());
    if (const auto *quadrics = dynamic_cast<const RQ_PrimQuadricMesh *>(&primitive))
        return fmt::format("{} quadrics", quadrics->getQuadricCount());
    const RQ_AttributeListHandle &points = primitive.getPointAttributes();
    return points && points->get(0) ? fmt::format("{} points", points->get(0)->entries()) : std::string();
}
}  // namespace rq::viewport

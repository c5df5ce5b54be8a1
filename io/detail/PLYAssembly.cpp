#include <io/detail/PLYAssembly.h>

#include <algorithm>

namespace rq::io
{
namespace
{
// The property that tells the corners of a face or strip, -1 without one.
int indicesOf(const PLYElement &element)
{
    for (const char *name : {"vertex_indices", "vertex_index"})
    {
        const int property = element.find(name);
        if (property >= 0 && element.properties[size_t(property)].isList())
            return property;
    }
    return -1;
}

bool isStrips(const PLYElement &element) { return element.name == "tristrips"; }

constexpr int32_t kRestart = -1;
}  // namespace

bool PLYAssembly::build(MOD_DetailHandle &detail)
{
    if (!body_.locate())
        return false;
    MOD_DetailHandle result;
    MOD_Edit edit(result);
    if (!appendPoints(edit))
        return false;
    for (size_t element = 0; element < header_.elements.size(); ++element)
    {
        const PLYElement &e = header_.elements[element];
        if (e.name == "face" || isStrips(e))
        {
            if (e.count > 0 && !appendPrimitives(edit, element))
                return false;
        }
        else if (e.name != "vertex")
            elements_.add(e.name.data());
    }
    // Rows of primitives exist when all primitives do.
    int64_t strips = edit.primitiveCount(), firstFace = 0;
    for (const PLYElement &e : header_.elements)
        strips -= e.name == "face" ? e.count : 0;
    for (const PLYElement &e : header_.elements)
    {
        firstFace += isStrips(e) ? strips : 0;
        if (e.name == "face" && e.count > 0 && !writeAttributes(edit, numberOf(e), ELM_OWNER_PRIMITIVE, firstFace))
            return false;
    }
    warnOfTheRest();
    edit.commit();
    detail = result;
    return true;
}

bool PLYAssembly::appendPoints(MOD_Edit &edit)
{
    const PLYElement *vertex = header_.find("vertex");
    points_ = vertex ? vertex->count : 0;
    if (points_ == 0)
    {
        source_.messages.warn(source_.name, {}, "expected points, found none");
        return true;
    }
    const std::vector<PLYAttribute> plan = planPLYAttributes(*vertex, -1);
    if (std::none_of(plan.begin(), plan.end(),
                     [](const PLYAttribute &a) { return a.name == ELM_POSITION_NAME && a.properties.size() == 3; }))
        return headerSource_.fail(vertex->name.data(), "expected properties x, y and z of \"vertex\", found fewer");
    if (points_ > INT32_MAX)
        return headerSource_.fail(vertex->name.data(),
                                  fmt::format("expected at most {} points, found {}", INT32_MAX, points_));
    if (!edit.appendPoints(points_))
        return source_.messages.fail(source_.name, {}, edit.message());
    return writeAttributes(edit, numberOf(*vertex), ELM_OWNER_POINT, 0);
}

bool PLYAssembly::appendPrimitives(MOD_Edit &edit, size_t element)
{
    const PLYElement &e = header_.elements[element];
    const int property = indicesOf(e);
    if (property < 0 || isReal(e.properties[size_t(property)].type))
        return headerSource_.fail(
            e.name.data(), fmt::format("expected a list vertex_indices of whole numbers in \"{}\", found none", e.name));
    const auto list = std::make_shared<PLYList>();
    if (!body_.readList(element, property, ELM_STORAGE_INT32, *list))
        return false;
    if (isStrips(e) ? appendStrips(edit, *list) : appendFaces(edit, element, list))
        return true;
    const std::span<const int32_t> points = list->items<int32_t>();
    const bool good = std::all_of(points.begin(), points.end(), [&](int32_t point) {
        return (point >= 0 && point < points_) || (isStrips(e) && point == kRestart);
    });
    return good ? source_.messages.fail(source_.name, {}, edit.message()) : failAtIndex(element, property, *list);
}

// The list becomes the column that tells the points of vertices.
bool PLYAssembly::appendFaces(MOD_Edit &edit, size_t element, const std::shared_ptr<PLYList> &corners)
{
    const std::span<const int32_t> points = corners->items<int32_t>();
    const auto adopt = [&](auto counts) {
        return edit.adoptPolygons(counts, true, ELM_STORAGE_INT32, points.data(), sizeof(int32_t), std::ssize(points),
                                  [corners] {});
    };
    const std::vector<int32_t> none(corners->sameCount == 0 ? size_t(header_.elements[element].count) : 0, 0);
    const bool appended =
        points.empty() ? edit.appendPolygons(none.empty() ? std::span<const int32_t>(corners->counts) : none, points, true)
        : corners->sameCount > 0 ? adopt(corners->sameCount)
                                 : adopt(std::span<const int32_t>(corners->counts));
    if (appended)
        warnOfSmallFaces(element, *corners);
    return appended;
}

// Every point from the third on makes a triangle with the two before it, turned round at every second one.
bool PLYAssembly::appendStrips(MOD_Edit &edit, const PLYList &strips)
{
    std::vector<int32_t> corners;
    const std::span<const int32_t> points = strips.items<int32_t>();
    const auto append = [&](std::span<const int32_t> strip) {
        for (size_t i = 2, run = 0; i < strip.size(); ++i, ++run)
        {
            const auto [a, b, c] = std::tie(strip[i - 2], strip[i - 1], strip[i]);
            if (c == kRestart || b == kRestart || a == kRestart)
            {
                run = size_t(-1);
                continue;
            }
            const bool turned = run % 2 == 1;
            corners.insert(corners.end(), {turned ? b : a, turned ? a : b, c});
        }
    };
    for (size_t first = 0, strip = 0; first < points.size(); ++strip)
    {
        const size_t count = size_t(strips.countOf(int64_t(strip)));
        append(points.subspan(first, count));
        first += count;
    }
    return edit.appendPolygons(3, corners, true);
}

bool PLYAssembly::failAtIndex(size_t element, int property, const PLYList &list)
{
    const std::span<const int32_t> points = list.items<int32_t>();
    const bool strips = isStrips(header_.elements[element]);
    const auto bad = std::find_if(points.begin(), points.end(), [&](int32_t point) {
        return !(point >= 0 && point < points_) && !(strips && point == kRestart);
    });
    int64_t item = bad - points.begin(), record = 0;
    for (; item >= list.countOf(record); ++record)
        item -= list.countOf(record);
    const bool isUnsigned = header_.elements[element].properties[size_t(property)].type == PLYType::UInt32;
    return source_.fail(body_.find(element, record, property, item),
                        fmt::format("expected the number of a point, of which the file has {}, found {}", points_,
                                    isUnsigned ? int64_t(uint32_t(*bad)) : int64_t(*bad)));
}

// Let a column of the host be the file's own memory where that has the same form.
bool PLYAssembly::adopt(MOD_Edit &edit, size_t element, ELM_Owner owner, const PLYAttribute &attribute)
{
    const PLYElement &e = header_.elements[element];
    const std::vector<PLYTarget> targets = targetsOf(attribute, e, nullptr);
    const void *values =
        owner_ && targets.size() == 1 && e.count == edit.count(owner) ? body_.inPlace(element, targets[0]) : nullptr;
    const int size = int(attribute.properties.size());
    const int64_t stride = size * sizeOf(e.properties[size_t(attribute.properties[0])].type);
    return values && edit.adopt(owner, attribute.name, attribute.storage, size, attribute.type, values, stride, e.count,
                                [keep = owner_] {});
}

bool PLYAssembly::writeAttributes(MOD_Edit &edit, size_t element, ELM_Owner owner, int64_t firstRow)
{
    const PLYElement &e = header_.elements[element];
    std::vector<PLYTarget> targets;
    for (const PLYAttribute &attribute : planPLYAttributes(e, owner == ELM_OWNER_POINT ? -1 : indicesOf(e)))
    {
        const int property = attribute.properties[0], size = int(attribute.properties.size());
        if (e.properties[size_t(property)].isList())
        {
            if (!writeLists(edit, element, attribute, owner, firstRow))
                return false;
            continue;
        }
        if (adopt(edit, element, owner, attribute))
            continue;
        ELM_Attribute *column = edit.attribute(owner, attribute.name, attribute.storage, size, attribute.type);
        column->numericTuple()->visit([&](auto &pages) {
            auto *values = e.count == pages.size() ? pages.writeAll() : pages.modifyAll();
            const std::vector<PLYTarget> added = targetsOf(attribute, e, values + firstRow * size);
            targets.insert(targets.end(), added.begin(), added.end());
        });
    }
    return targets.empty() || body_.readValues(element, targets);
}

bool PLYAssembly::writeLists(MOD_Edit &edit, size_t element, const PLYAttribute &attribute, ELM_Owner owner,
                             int64_t firstRow)
{
    PLYList list, corners;
    const int property = attribute.properties[0], indices = indicesOf(header_.elements[element]);
    if (!body_.readList(element, property, attribute.storage, list))
        return false;
    if (attribute.cornerSize > 0 && indices >= 0)
    {
        if (!body_.readList(element, indices, ELM_STORAGE_INT32, corners))
            return false;
        bool fits = true;
        for (int64_t face = 0; fits && face < header_.elements[element].count; ++face)
            fits = list.countOf(face) == int64_t(corners.countOf(face)) * attribute.cornerSize;
        if (fits)
            // Faces behind strips have vertices behind those of triangles.
            return writeCorners(edit, attribute, list, 3 * firstRow), true;
    }
    ELM_Attribute &column = *edit.arrayAttribute(owner, attribute.name, attribute.storage);
    column.numericArrays()->visit([&]<class T>(ELM_ArrayTuple<T> &arrays) {
        std::span<const T> items = list.items<T>();
        std::vector<int32_t> places(size_t(header_.elements[element].count));
        for (size_t row = 0; row < places.size(); ++row)
        {
            const size_t count = size_t(list.countOf(int64_t(row)));
            places[row] = arrays.add(items.first(count));
            items = items.subspan(count);
        }
        arrays.writeIndices(firstRow, std::ssize(places), places.data());
    });
    return true;
}

// The vertices of an element's faces are one run.
void PLYAssembly::writeCorners(MOD_Edit &edit, const PLYAttribute &attribute, const PLYList &list, int64_t firstVertex)
{
    ELM_Attribute &column =
        *edit.attribute(ELM_OWNER_VERTEX, attribute.name, attribute.storage, attribute.cornerSize, attribute.type);
    column.numericTuple()->visit([&]<class T>(ELM_PageArray<T> &pages) {
        const std::span<const T> items = list.items<T>();
        pages.write(firstVertex, std::ssize(items) / attribute.cornerSize, items.data());
    });
}

void PLYAssembly::warnOfSmallFaces(size_t element, const PLYList &corners)
{
    const auto isSmall = [](int32_t count) { return count < 3; };
    const bool same = corners.sameCount >= 0;
    const int64_t small = same ? (isSmall(corners.sameCount) ? header_.elements[element].count : 0)
                               : std::count_if(corners.counts.begin(), corners.counts.end(), isSmall);
    if (small == 0)
        return;
    const int64_t first =
        same ? 0 : std::find_if(corners.counts.begin(), corners.counts.end(), isSmall) - corners.counts.begin();
    source_.warn(body_.find(element, first), fmt::format("expected three or more corners, found fewer; {} kept",
                                                         counted(small, "such face is", "such faces are")));
}

void PLYAssembly::warnOfTheRest()
{
    if (elements_.count > 0)
        headerSource_.warn(elements_.first, fmt::format("expected vertex, face or tristrips, found {}; {} passed over",
                                                        describe(headerSource_.text, elements_.first),
                                                        counted(elements_.count, "element is", "elements are")));
    body_.warnOfSurplus();
}
}  // namespace rq::io

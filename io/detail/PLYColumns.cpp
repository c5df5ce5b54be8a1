#include <io/detail/PLYColumns.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include <io/detail/PLYRoles.h>
#include <io/detail/RQGNames.h>
#include <io/detail/bytes.h>

namespace rq::io
{
namespace
{
// The type that holds the values of a storage; 64-bit whole numbers are looked at.
PLYType typeOf(const ELM_Attribute &attribute)
{
    constexpr PLYType kTypes[] = {PLYType::UInt8, PLYType::Int8,   PLYType::Int16,  PLYType::Int32,
                                  PLYType::None,  PLYType::Real32, PLYType::Real32, PLYType::Real64};
    if (attribute.storage() != ELM_STORAGE_INT64)
        return kTypes[attribute.storage()];
    const auto fits = [](int64_t value) { return value == int32_t(value); };
    bool all = true;
    if (const auto *pages = attribute.pages<int64_t>())
        for (int64_t row = 0; all && row < pages->size(); ++row)
            all = std::all_of(pages->tuple(row), pages->tuple(row) + pages->tupleSize(), fits);
    else
        all = false;
    return all ? PLYType::Int32 : PLYType::Real64;
}

// Whether bytes tell the very same colours.
bool isOfBytes(const ELM_Attribute &attribute)
{
    const ELM_PageArray<float> *pages = attribute.pages<float>();
    bool all = pages && pages->size() > 0;
    for (int64_t row = 0; all && row < pages->size(); ++row)
        for (int c = 0; all && c < pages->tupleSize(); ++c)
        {
            const float value = pages->value(row, c);
            all = value >= 0.0f && value <= 1.0f && float(std::lround(value * 255.0f) / 255.0) == value;
        }
    return all;
}

bool isWord(std::string_view name)
{
    return !name.empty() && std::ranges::all_of(name, [](char c) { return uint8_t(c) > 0x20 && c != 0x7f; });
}

template <class T> void writeAs(PLYOutput &out, PLYType type, T value)
{
    visitPLYType(type, [&](auto like) { out.number(decltype(like)(value)); });
}

const char *nameOf(PLYType type)
{
    constexpr const char *kNames[] = {"", "char", "uchar", "short", "ushort", "int", "uint", "float", "double"};
    return kNames[size_t(type)];
}

PLYType countTypeFor(int64_t longest) { return longest <= UINT8_MAX ? PLYType::UInt8 : PLYType::Int32; }
}  // namespace

template <class T> void PLYOutput::number(T value)
{
    if (!isText)
        return appendBytes(bytes, value);
    if (!lineBegins)
        bytes += ' ';
    lineBegins = false;
    if constexpr (std::is_floating_point_v<T>)
        if (std::isnan(value))
        {
            bytes += "nan";
            return;
        }
    char digits[32];
    if constexpr (sizeof(T) == 1)
        bytes += std::to_string(int(value));
    else
        bytes.append(digits, std::to_chars(digits, digits + sizeof(digits), value).ptr);
}

void PLYOutput::endRow()
{
    if (isText)
        bytes += '\n';
    lineBegins = true;
}

bool PLYColumns::isFree(const std::vector<std::string> &properties) const
{
    return std::ranges::none_of(columns_, [&](const Column &column) {
        return std::ranges::find_first_of(column.properties, properties) != column.properties.end();
    });
}

bool PLYColumns::takeRole(const ELM_Attribute &attribute)
{
    const auto role =
        std::ranges::find_if(kPLYRoles, [&](const PLYRole &r) { return attribute.name().view() == r.attribute; });
    const bool isReal = attribute.storageClass() == ELM_STORAGE_CLASS_FLOAT;
    if (role == std::end(kPLYRoles) || !isReal || attribute.tupleSize() != int(role->properties.size()))
        return false;
    const std::vector<std::string> properties(role->properties.begin(), role->properties.end());
    if (!isFree(properties))
        return false;
    const bool asBytes = role->isColor() && isOfBytes(attribute);
    columns_.push_back({.kind = Kind::Values,
                        .attribute = &attribute,
                        .type = asBytes ? PLYType::UInt8 : typeOf(attribute),
                        .properties = properties,
                        .asBytes = asBytes});
    return true;
}

void PLYColumns::takeCustom(const ELM_Attribute &attribute, Kind kind, int64_t largestFace)
{
    const std::string name(attribute.name().view());
    const int size = attribute.tupleSize(), type = attribute.typeInfo();
    const bool isKnownType = type >= ELM_TYPE_NONE && type <= ELM_TYPE_BOX;
    std::vector<std::string> properties;
    if (kind == Kind::Values && size > 1)
        for (int c = 0; c < size; ++c)
            properties.push_back(fmt::format("{}_{}", name, c));
    else
        properties.push_back(name);
    if (!isWord(name) || !isFree(properties))
        return;
    Column column{.kind = kind, .attribute = &attribute, .type = typeOf(attribute), .properties = std::move(properties)};
    const char *typeName = kRQGTypeInfos[(isKnownType ? type : ELM_TYPE_NONE) + 1];
    if (kind == Kind::Corners)
        column.note = fmt::format("corners {} {} {}", size, typeName, name);
    else if (kind == Kind::Values && (size > 1 || typeName != kRQGTypeInfos[0]))
        column.note = fmt::format("attribute {} {} {}", size, typeName, name);
    if (kind != Kind::Values)
        column.countType = kind == Kind::Corners ? countTypeFor(largestFace * size) : PLYType::Int32;
    columns_.push_back(std::move(column));
    leftovers_.hold(&attribute);
}

void PLYColumns::takeCorners(int64_t largestFace)
{
    columns_.push_back({.kind = Kind::Points, .properties = {"vertex_indices"}, .countType = countTypeFor(largestFace)});
    for (const ELM_Attribute &attribute : detail_.attributes(ELM_OWNER_VERTEX))
        if (attribute.scope() == ELM_SCOPE_PUBLIC && attribute.numericTuple())
            takeCustom(attribute, Kind::Corners, largestFace);
}

void PLYColumns::take(ELM_Owner owner)
{
    for (const ELM_Attribute &attribute : detail_.attributes(owner))
    {
        if (attribute.scope() != ELM_SCOPE_PUBLIC)
            continue;
        // An alpha is one beside colours only.
        const bool isStray = attribute.name().view() == "Alpha" && isFree({"red"});
        if (attribute.numericTuple() && !isStray && takeRole(attribute))
            leftovers_.hold(&attribute);
        else if (attribute.numericTuple())
            takeCustom(attribute, Kind::Values, 0);
        else if (attribute.numericArrays() && attribute.tupleSize() == 1)
            takeCustom(attribute, Kind::Arrays, 0);
    }
}

void PLYColumns::declare(std::string &header, const char *element, int64_t count) const
{
    header += fmt::format("element {} {}\n", element, count);
    for (const Column &column : columns_)
    {
        if (!column.note.empty())
            header += fmt::format("comment {}\n", column.note);
        for (const std::string &property : column.properties)
            header += column.countType != PLYType::None
                          ? fmt::format("property list {} {} {}\n", nameOf(column.countType), nameOf(column.type), property)
                          : fmt::format("property {} {}\n", nameOf(column.type), property);
    }
}

void PLYColumns::writeCorners(PLYOutput &out, const Column &column, ELM_Offset face) const
{
    const auto [start, count] = detail_.vertexRun(face);
    const int64_t size = column.attribute ? column.attribute->tupleSize() : 1;
    int64_t corners = 0;
    for (ELM_Offset vertex = start; vertex < start + count; ++vertex)
        corners += detail_.vertexPoint(vertex) >= 0;
    writeAs(out, column.countType, corners * size);
    for (ELM_Offset vertex = start; vertex < start + count; ++vertex)
    {
        if (detail_.vertexPoint(vertex) < 0)
            continue;
        if (!column.attribute)
            out.number(int32_t(detail_.vertexPoint(vertex)));
        else
            column.attribute->numericTuple()->visit([&](const auto &pages) {
                for (int c = 0; c < pages.tupleSize(); ++c)
                    writeAs(out, column.type, pages.value(vertex, c));
            });
    }
}

void PLYColumns::writeRow(PLYOutput &out, ELM_Offset row) const
{
    for (const Column &column : columns_)
    {
        if (column.kind == Kind::Points || column.kind == Kind::Corners)
            writeCorners(out, column, row);
        else if (column.kind == Kind::Arrays)
            column.attribute->numericArrays()->visit([&](const auto &arrays) {
                const auto items = arrays.get(row);
                out.number(int32_t(items.size()));
                for (const auto item : items)
                    writeAs(out, column.type, item);
            });
        else
            column.attribute->numericTuple()->visit([&](const auto &pages) {
                for (int c = 0; c < pages.tupleSize(); ++c)
                    if (column.asBytes)
                        out.number(uint8_t(std::lround(float(pages.value(row, c)) * 255.0f)));
                    else
                        writeAs(out, column.type, pages.value(row, c));
            });
    }
    out.endRow();
}
}  // namespace rq::io

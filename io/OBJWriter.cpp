#include <io/OBJWriter.h>

#include <algorithm>
#include <new>

#include <fmt/format.h>

#include <io/detail/OBJCorners.h>
#include <io/detail/OBJNames.h>
#include <io/detail/Tally.h>
#include <io/detail/compacted.h>

namespace rq::io
{
namespace
{
/// Turns a detail without vacant offsets into lines.
class OBJText
{
public:
    OBJText(const MSH_Detail &detail, const std::string &name, Messages &messages)
        : detail_(detail), name_(name), messages_(messages)
    {}

    std::string write();

private:
    void writePoints();
    void writePrimitive(ELM_Offset primitive, const char *word);
    void writeCorner(ELM_Offset vertex, bool isFace);
    void warnOfTheRest(const OBJNames &names);
    void warn(std::string what) { messages_.warn(name_, {}, std::move(what)); }

    const MSH_Detail &detail_;
    const std::string &name_;
    Messages &messages_;
    std::string text_;
    OBJCorners uvs_, normals_;
    std::vector<const ELM_Attribute *> held_;
    std::vector<int64_t> leftOut_;  // primitives of each type
    int64_t loose_ = 0;
};

const char *wordOf(const MSH_Detail &detail, ELM_Offset primitive)
{
    switch (detail.typeOf(primitive))
    {
    case ELM_PRIMITIVE_POLYGON:
        return detail.isClosed(primitive) ? "f" : "l";
    case ELM_PRIMITIVE_PARTICLES:
        return "p";
    default:
        return nullptr;
    }
}

std::string OBJText::write()
{
    held_ = {uvs_.take(detail_, "uv", 2, 3), normals_.take(detail_, "N", 3, 3)};
    writePoints();
    uvs_.write(text_, "vt");
    normals_.write(text_, "vn");
    OBJNames names(detail_, text_);
    for (ELM_Offset primitive = 0; primitive < detail_.primitiveCount(); ++primitive)
    {
        if (const char *word = wordOf(detail_, primitive))
        {
            names.write(primitive);
            writePrimitive(primitive, word);
            continue;
        }
        const size_t type = size_t(detail_.typeOf(primitive));
        leftOut_.resize(std::max(leftOut_.size(), type + 1));
        ++leftOut_[type];
    }
    warnOfTheRest(names);
    return std::move(text_);
}

void OBJText::writePoints()
{
    const ELM_Attribute *colors = detail_.find(ELM_OWNER_POINT, "Cd");
    if (colors && !(colors->numericTuple() && colors->storageClass() == ELM_STORAGE_CLASS_FLOAT && colors->tupleSize() == 3))
        colors = nullptr;
    held_.insert(held_.end(), {&detail_.positions(), colors});
    for (int64_t point = 0; point < detail_.pointCount(); ++point)
    {
        text_ += 'v';
        appendOBJNumbers(text_, detail_.positions(), point);
        if (colors)
            appendOBJNumbers(text_, *colors, point);
        text_ += '\n';
    }
}

void OBJText::writePrimitive(ELM_Offset primitive, const char *word)
{
    text_ += word;
    const auto [start, count] = detail_.vertexRun(primitive);
    for (ELM_Offset vertex = start; vertex < start + count; ++vertex)
        if (detail_.vertexPoint(vertex) >= 0)
            writeCorner(vertex, *word == 'f');
        else
            ++loose_;
    text_ += '\n';
}

void OBJText::writeCorner(ELM_Offset vertex, bool isFace)
{
    // Only the corners of faces have more than a point in every reader's eyes.
    const auto numberOf = [&](const OBJCorners &values) {
        const int64_t number = values.isEmpty() ? 0 : values.number(vertex);
        return number > 0 && !isFace && values.isZero(number) ? 0 : number;
    };
    const int64_t uv = numberOf(uvs_), normal = numberOf(normals_);
    text_ += ' ' + std::to_string(detail_.vertexPoint(vertex) + 1);
    if (uv > 0 || normal > 0)
        text_ += '/';
    if (uv > 0)
        text_ += std::to_string(uv);
    if (normal > 0)
        text_ += '/' + std::to_string(normal);
}

void OBJText::warnOfTheRest(const OBJNames &names)
{
    constexpr const char *kOwners[] = {"vertices", "points", "primitives", "the detail"};
    for (int owner = 0; owner < ELM_OWNERS; ++owner)
        for (const ELM_Attribute &attribute : detail_.attributes(ELM_Owner(owner)))
        {
            // The matrices of primitives that are left out anyway.
            if (std::ranges::find(held_, &attribute) != held_.end() || names.holds(attribute) ||
                (attribute.scope() == ELM_SCOPE_PRIVATE && attribute.name().view() == ELM_TRANSFORM_NAME))
                continue;
            warn(fmt::format("attribute \"{}\" of {} is left out", attribute.name().c_str(), kOwners[owner]));
        }
    for (const ELM_Attribute *attribute : held_)
    {
        if (!attribute)
            continue;
        const std::string_view name = attribute->name().view();
        if (attribute->owner() == ELM_OWNER_POINT && name != ELM_POSITION_NAME && name != "Cd")
            warn(fmt::format("attribute \"{}\" of points becomes one of vertices", name));
        if (attribute->storage() == ELM_STORAGE_REAL64)
            warn(fmt::format("attribute \"{}\" has 64 bits, of which readers may keep 32", name));
    }
    for (const ELM_Owner owner : {ELM_OWNER_VERTEX, ELM_OWNER_POINT})
        for (int64_t i = 0; i < detail_.groups(owner).size(); ++i)
            warn(fmt::format("group \"{}\" of {} is left out", detail_.groups(owner)[i].name().c_str(), kOwners[owner]));
    for (const std::string &what : names.warnings())
        warn(what);
    for (size_t type = 0; type < leftOut_.size(); ++type)
        if (leftOut_[type] > 0)
        {
            const ELM_PrimitiveDefinition *known = ELM_PrimitiveFactory::find(ELM_PrimitiveTypeId(type));
            warn(fmt::format("{} left out: {}", counted(leftOut_[type], "primitive is", "primitives are"),
                             known ? known->label.c_str() : "of no type"));
        }
    if (loose_ > 0)
        warn(counted(loose_, "vertex without a point is", "vertices without a point are") + " left out");
}
}  // namespace

bool writeOBJ(const MOD_ConstDetailHandle &detail, const std::string &name, std::string &bytes, Messages &messages)
{
    try
    {
        if (!detail)
            return messages.fail(name, {}, "there is nothing to write");
        const MOD_ConstDetailHandle whole = compacted(detail);
        bytes = OBJText(*whole.readLock(), name, messages).write();
        return true;
    }
    catch (const std::bad_alloc &)
    {
        return messages.fail(name, {}, "needs more memory than there is");
    }
}
}  // namespace rq::io

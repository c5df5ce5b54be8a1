#include <io/OBJWriter.h>

#include <array>
#include <filesystem>

#include <io/detail/Leftovers.h>
#include <io/detail/Materials.h>
#include <io/detail/OBJCorners.h>
#include <io/detail/OBJNames.h>
#include <io/detail/writeMTL.h>
#include <io/detail/writeWhole.h>

namespace rq::io
{
namespace
{
/// Turns a detail without vacant offsets into lines.
class OBJText
{
public:
    OBJText(const MSH_Detail &detail, const std::string &name, Messages &messages)
        : detail_(detail), name_(name), leftovers_(detail, name, messages)
    {}

    /// `materials`, if any, receives the text of the material file.
    std::string write(std::string *materials);

private:
    void writeMaterials(std::string &materials);
    void writePoints();
    void writePrimitive(ELM_Offset primitive, const char *word);
    void writeCorner(ELM_Offset vertex, bool isFace);
    void warnOfTheRest(const OBJNames &names);
    void warnOfChange(const ELM_Attribute *attribute);

    const MSH_Detail &detail_;
    const std::string &name_;
    Leftovers leftovers_;
    std::string text_;
    OBJCorners uvs_, normals_;
    std::array<const ELM_Attribute *, 4> held_{};
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

std::string OBJText::write(std::string *materials)
{
    if (materials)
        writeMaterials(*materials);
    held_[0] = uvs_.take(detail_, "uv", 2, 3);
    held_[1] = normals_.take(detail_, "N", 3, 3);
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
        leftovers_.leaveOut(primitive);
    }
    warnOfTheRest(names);
    return std::move(text_);
}

void OBJText::writeMaterials(std::string &materials)
{
    const ELM_Attribute *told = findMaterials(detail_);
    const std::string file = std::filesystem::path(materialFileOf(name_)).filename().string();
    if (!told || !isTellable(file))
        return;
    materials = writeMTL(told->dicts()->get(0).options());
    if (materials.empty())
        return;
    leftovers_.hold(told);
    text_ += "mtllib " + file + '\n';
}

void OBJText::writePoints()
{
    const ELM_Attribute *colors = detail_.find(ELM_OWNER_POINT, "Cd");
    if (colors && !(colors->numericTuple() && colors->storageClass() == ELM_STORAGE_CLASS_FLOAT && colors->tupleSize() == 3))
        colors = nullptr;
    held_[2] = &detail_.positions();
    held_[3] = colors;
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
            leftovers_.leaveOutLooseVertex();
    text_ += '\n';
}

void OBJText::writeCorner(ELM_Offset vertex, bool isFace)
{
    // Only the corners of faces have more than a point in every reader's eyes; and beside others, zeros are no normal.
    const auto numberOf = [&](const OBJCorners &values, bool takesZeros) {
        const int64_t number = values.isEmpty() ? 0 : values.number(vertex);
        return number > 0 && !takesZeros && values.isZero(number) ? 0 : number;
    };
    const int64_t uv = numberOf(uvs_, isFace), normal = numberOf(normals_, isFace && normals_.count() == 1);
    text_ += ' ' + std::to_string(detail_.vertexPoint(vertex) + 1);
    if (uv > 0 || normal > 0)
        text_ += '/';
    if (uv > 0)
        text_ += std::to_string(uv);
    if (normal > 0)
        text_ += '/' + std::to_string(normal);
}

void OBJText::warnOfChange(const ELM_Attribute *attribute)
{
    if (!attribute)
        return;
    const std::string_view name = attribute->name().view();
    if (attribute->owner() == ELM_OWNER_POINT && name != ELM_POSITION_NAME && name != "Cd")
        leftovers_.warn(fmt::format("attribute \"{}\" of points becomes one of vertices", name));
    if (attribute->storage() == ELM_STORAGE_REAL64)
        leftovers_.warn(fmt::format("attribute \"{}\" has 64 bits, of which readers may keep 32", name));
}

void OBJText::warnOfTheRest(const OBJNames &names)
{
    for (const ELM_Attribute *attribute : held_)
        leftovers_.hold(attribute);
    for (const ELM_Attribute &attribute : detail_.attributes(ELM_OWNER_PRIMITIVE))
        if (names.holds(attribute))
            leftovers_.hold(&attribute);
    leftovers_.warnOfAttributes();
    for (const ELM_Attribute *attribute : held_)
        warnOfChange(attribute);
    leftovers_.warnOfGroups({ELM_OWNER_VERTEX, ELM_OWNER_POINT});
    for (const std::string &what : names.warnings())
        leftovers_.warn(what);
    leftovers_.warnOfElements();
}
}  // namespace

bool writeOBJ(const MOD_ConstDetailHandle &detail, const std::string &name, std::string &bytes, Messages &messages,
              std::string *materials)
{
    return writeUnpacked(detail, name, messages, [&](const MOD_ConstDetailHandle &whole) {
        bytes = OBJText(*whole.readLock(), name, messages).write(materials);
        return true;
    });
}

std::string materialFileOf(const std::string &name)
{
    const std::string file = std::filesystem::path(name).replace_extension(".mtl").string();
    return file != name ? file : name + ".mtl";
}
}  // namespace rq::io

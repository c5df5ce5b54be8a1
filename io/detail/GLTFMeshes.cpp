#include <io/detail/GLTFMeshes.h>

#include <algorithm>

#include <io/detail/PackedParts.h>
#include <io/detail/Tally.h>
#include <io/detail/bytes.h>

namespace rq::io
{
GLTFMeshes::GLTFMeshes(const MOD_ConstDetailHandle &own, bool isPlacing, const std::string &name, GLTFBuffer &buffer,
                       Messages &messages)
    : handle_(own), detail_(*handle_.readLock()), leftovers_(detail_, name, messages), materials_(detail_, leftovers_),
      objects_(takeObjects()), parts_(partsOf(handle_, objects_, materials_, leftovers_)),
      attributes_(detail_, !parts_.empty(), materials_.otherColors(), leftovers_)
{
    if (isPlacing)
        holdPlacing();
    if (detail_.pointCount() > 0)
        writeBuffer(buffer);
    leftovers_.warnOfAttributes();
    leftovers_.warnOfGroups({ELM_OWNER_VERTEX, ELM_OWNER_POINT, ELM_OWNER_PRIMITIVE});
    leftovers_.warnOfElements();
    divide();
}

const ELM_StringTuple *GLTFMeshes::takeObjects()
{
    const ELM_Attribute *objects = detail_.find(ELM_OWNER_PRIMITIVE, "object");
    if (!objects || !objects->strings() || objects->tupleSize() != 1)
        return nullptr;
    leftovers_.hold(objects);
    return objects->strings();
}

void GLTFMeshes::holdPlacing()
{
    for (const ELM_Owner owner : {ELM_OWNER_VERTEX, ELM_OWNER_POINT, ELM_OWNER_PRIMITIVE})
        for (const ELM_Attribute &attribute : detail_.attributes(owner))
        {
            const std::string_view name = attribute.name().view();
            const bool isGiven = name == "Cd" || name == "material" || name == "object";
            if (detail_.count(owner) == 0 && (isGiven || !isOfPlaced(attribute)))
                leftovers_.hold(&attribute);
        }
    if (const ELM_Attribute *told = findMaterials(detail_))
        leftovers_.hold(told);
}

void GLTFMeshes::writeBuffer(GLTFBuffer &buffer)
{
    std::vector<int32_t> used;
    for (const GLTFPart &part : parts_)
        used.insert(used.end(), part.vertices.begin(), part.vertices.end());
    const std::vector<const ELM_Attribute *> ofCorners = attributes_.ofCorners();
    const GLTFVertices vertices(detail_, ofCorners, used);
    std::vector<bool> isUsed(size_t(detail_.pointCount()), ofCorners.empty());
    for (const int32_t vertex : used)
        isUsed[size_t(detail_.vertexPoint(vertex))] = true;
    if (const int64_t unused = std::count(isUsed.begin(), isUsed.end(), false); unused > 0)
        leftovers_.warn(counted(unused, "point that nothing uses is", "points that nothing uses are") + " left out");
    attributes_.write(vertices, buffer);
    if (used.empty())
        return;
    buffer.beginView(GLTFBuffer::Use::Index);
    for (const GLTFPart &part : parts_)
    {
        indices_.push_back(
            buffer.add({.begin = buffer.bytes.size(), .count = std::ssize(part.vertices), .type = GLTFType::UInt32}));
        for (const int32_t vertex : part.vertices)
            appendBytes(buffer.bytes, vertices.number(vertex));
    }
}

// Without parts all points are a mesh.
void GLTFMeshes::divide()
{
    if (parts_.empty() && detail_.pointCount() > 0)
        all_.push_back({"", 0, 0});
    for (size_t first = 0, end = 0; first < parts_.size(); first = end)
    {
        const int object = parts_[first].object;
        while (end < parts_.size() && parts_[end].object == object)
            ++end;
        all_.push_back({std::string(object < 0 ? "" : objects_->table()[size_t(object)].view()), first, end});
    }
}

std::vector<int> GLTFMeshes::materialsOf(const Mesh &mesh, const GLTFGiven &given, GLTFMaterialList &file) const
{
    std::vector<int> numbers;
    for (size_t part = mesh.first; part < mesh.end; ++part)
        numbers.push_back(materials_.inFile(parts_[part].material, given, file));
    return numbers;
}

void GLTFMeshes::write(BAS_JSONWriter &json, const Mesh &mesh, const std::vector<int> &materials) const
{
    json.beginMap();
    json.key("primitives");
    json.beginArray();
    if (mesh.first == mesh.end)
        writePrimitive(json, {}, -1, -1);
    for (size_t part = mesh.first; part < mesh.end; ++part)
        writePrimitive(json, parts_[part], indices_[part], materials[part - mesh.first]);
    json.endArray();
    json.endMap();
}

void GLTFMeshes::writePrimitive(BAS_JSONWriter &json, const GLTFPart &part, int indices, int material) const
{
    json.beginMap();
    attributes_.writeMap(json);
    json.writeKeyInt("mode", part.mode);
    if (indices >= 0)
        json.writeKeyInt("indices", indices);
    if (material >= 0)
        json.writeKeyInt("material", material);
    json.endMap();
}
}  // namespace rq::io

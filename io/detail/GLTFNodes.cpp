#include <io/detail/GLTFNodes.h>

#include <algorithm>

#include <io/detail/JSONText.h>
#include <io/detail/rowReader.h>

namespace rq::io
{
namespace
{
std::optional<std::string> textOf(const MOD_PrimPacked &placing, const char *name)
{
    int64_t row;
    const ELM_Attribute *found = findOfPlacing(placing, name, row);
    const int32_t place = found && found->strings() ? found->strings()->index(row) : -1;
    return place < 0 ? std::nullopt : std::optional(std::string(found->strings()->table()[size_t(place)].view()));
}

/// What a packed primitive gives, and what it does not, from those that place it.
GLTFGiven givenBy(const MOD_PrimPacked &placing, const GLTFGiven &outer)
{
    GLTFGiven given = outer;
    if (const auto object = textOf(placing, "object"))
        given.object = object;
    if (const auto material = textOf(placing, "material"))
    {
        given.material = material;
        const ELM_Attribute *told = findMaterials(placing.detail());
        const auto found = told ? findMaterial(told->dicts()->get(0).options(), *material) : std::nullopt;
        given.told = found.value_or(Material{});
    }
    int64_t row;
    if (const ELM_Attribute *colors = findOfPlacing(placing, "Cd", row);
        colors && colors->storageClass() == ELM_STORAGE_CLASS_FLOAT && colors->tupleSize() >= 3)
    {
        given.colour.emplace();
        readRow(*colors, row, given.colour->data(), 3);
        for (double &channel : *given.colour)
            channel = channel >= 0.0 ? std::min(channel, 1.0) : 0.0;
    }
    return given;
}
}  // namespace

GLTFNodes::GLTFNodes(const PackedParts &parts, const std::deque<GLTFMeshes> &meshes) : parts_(parts), meshesOf_(meshes)
{
    for (auto of = meshes.rbegin(); of != meshes.rend(); ++of)
        of->materials().list(materials_);
    top_ = addContent(parts.all().size() - 1, {});
}

int GLTFNodes::addNode(Node node)
{
    nodes_.push_back(std::move(node));
    return int(nodes_.size()) - 1;
}

std::vector<int> GLTFNodes::addContent(size_t part, const GLTFGiven &given)
{
    std::vector<int> nodes;
    for (const GLTFMeshes::Mesh &mesh : meshesOf_[part].all())
        nodes.push_back(addNode({.name = mesh.name.empty() ? given.object.value_or("") : mesh.name,
                                 .mesh = meshFor(meshesOf_[part], mesh, given)}));
    for (const PackedParts::Placement &placement : parts_.all()[part].placements)
        nodes.push_back(addPlacement(part, placement, given));
    return nodes;
}

int GLTFNodes::addPlacement(size_t part, const PackedParts::Placement &placement, const GLTFGiven &outer)
{
    const MOD_PrimPacked placing(*parts_.all()[part].whole.readLock(), placement.primitive);
    const GLTFGiven given = givenBy(placing, outer);
    const int first = int(nodes_.size());
    const std::vector<int> content = addContent(placement.part, given);
    // A mesh alone needs no node above it.
    if (content.size() == 1 && content[0] == first && nodes_.back().mesh >= 0 && nodes_.back().matrix == BAS_Mat4d())
        return nodes_.back().matrix = placement.matrix, first;
    return addNode({.name = given.object.value_or(""), .matrix = placement.matrix, .children = content});
}

int GLTFNodes::meshFor(const GLTFMeshes &from, const GLTFMeshes::Mesh &mesh, const GLTFGiven &given)
{
    std::vector<int> materials = from.materialsOf(mesh, given, materials_);
    const auto [known, isNew] = known_.try_emplace({&mesh, materials}, int(meshes_.size()));
    if (isNew)
        meshes_.push_back({&from, &mesh, std::move(materials)});
    return known->second;
}

void GLTFNodes::write(BAS_JSONWriter &json) const
{
    if (nodes_.empty())
        return;
    materials_.write(json);
    writeMeshes(json);
    writeNodes(json);
    json.key("scenes");
    json.beginArray();
    json.beginMap();
    json.key("nodes");
    json.uniformArray(top_.data(), std::ssize(top_));
    json.endMap();
    json.endArray();
    json.writeKeyInt("scene", 0);
}

void GLTFNodes::writeMeshes(BAS_JSONWriter &json) const
{
    if (meshes_.empty())
        return;
    json.key("meshes");
    json.beginArray();
    for (const auto &[from, mesh, materials] : meshes_)
        from->write(json, *mesh, materials);
    json.endArray();
}

void GLTFNodes::writeNodes(BAS_JSONWriter &json) const
{
    json.key("nodes");
    json.beginArray();
    for (const Node &node : nodes_)
    {
        json.beginMap();
        if (node.mesh >= 0)
            json.writeKeyInt("mesh", node.mesh);
        if (!node.name.empty())
            json.writeKeyString("name", toJSONText(node.name));
        if (node.matrix != BAS_Mat4d())
        {
            json.key("matrix");
            json.uniformArray(node.matrix.getValue(), 16);
        }
        if (!node.children.empty())
        {
            json.key("children");
            json.uniformArray(node.children.data(), std::ssize(node.children));
        }
        json.endMap();
    }
    json.endArray();
}
}  // namespace rq::io

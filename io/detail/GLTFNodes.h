#pragma once

#include <deque>
#include <map>

#include <io/detail/GLTFMeshes.h>
#include <io/detail/PackedParts.h>

namespace rq::io
{
/// The nodes of a glTF file: one for each mesh of a detail and for each packed primitive, under which lies what it places.
/// What is placed often has its meshes once, or once for each choice of materials that it is given.
class GLTFNodes
{
public:
    /// `meshes` are those of each part.
    GLTFNodes(const PackedParts &parts, const std::deque<GLTFMeshes> &meshes);

    /// Write the members "materials", "meshes", "nodes", "scenes" and "scene"; nothing without nodes.
    void write(BAS_JSONWriter &json) const;

private:
    struct Node
    {
        std::string name;
        int mesh = -1;
        BAS_Mat4d matrix{};
        std::vector<int> children{};
    };
    struct Mesh
    {
        const GLTFMeshes *from;
        const GLTFMeshes::Mesh *mesh;
        std::vector<int> materials;
    };

    std::vector<int> addContent(size_t part, const GLTFGiven &given);
    int addPlacement(size_t part, const PackedParts::Placement &placement, const GLTFGiven &outer);
    int addNode(Node node);
    int meshFor(const GLTFMeshes &from, const GLTFMeshes::Mesh &mesh, const GLTFGiven &given);
    void writeMeshes(BAS_JSONWriter &json) const;
    void writeNodes(BAS_JSONWriter &json) const;

    const PackedParts &parts_;
    const std::deque<GLTFMeshes> &meshesOf_;
    GLTFMaterialList materials_;
    std::vector<Mesh> meshes_;
    std::map<std::pair<const GLTFMeshes::Mesh *, std::vector<int>>, int> known_;
    std::vector<Node> nodes_;
    std::vector<int> top_;
};
}  // namespace rq::io

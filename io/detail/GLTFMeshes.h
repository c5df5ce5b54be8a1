#pragma once

#include <io/detail/GLTFAttributes.h>
#include <io/detail/GLTFParts.h>

namespace rq::io
{
/// The meshes of a detail: one for each "object" of its primitives, all of the same vertices.
class GLTFMeshes
{
public:
    struct Mesh
    {
        std::string name;
        size_t first, end;  ///< of the parts
    };

    /// Append what is in them to the buffer.  `own` must have no vacant offsets; with `isPlacing` it lost packed geometry,
    /// whose attributes are told elsewhere.  Warns, under the name of the file, of what glTF cannot hold.
    GLTFMeshes(const MOD_ConstDetailHandle &own, bool isPlacing, const std::string &name, GLTFBuffer &buffer,
               Messages &messages);
    GLTFMeshes(const GLTFMeshes &) = delete;

    const std::vector<Mesh> &all() const { return all_; }
    const GLTFMaterials &materials() const { return materials_; }

    /// The materials of a mesh's primitives in a file.
    std::vector<int> materialsOf(const Mesh &mesh, const GLTFGiven &given, GLTFMaterialList &file) const;

    /// Write one; there is a material, or -1, for each of its primitives.
    void write(BAS_JSONWriter &json, const Mesh &mesh, const std::vector<int> &materials) const;

private:
    const ELM_StringTuple *takeObjects();
    void holdPlacing();
    void writeBuffer(GLTFBuffer &buffer);
    void divide();
    void writePrimitive(BAS_JSONWriter &json, const GLTFPart &part, int indices, int material) const;

    MOD_ConstDetailHandle handle_;
    const MSH_Detail &detail_;
    Leftovers leftovers_;
    GLTFMaterials materials_;
    const ELM_StringTuple *objects_;
    std::vector<GLTFPart> parts_;
    GLTFAttributes attributes_;
    std::vector<int> indices_;  // the accessor of each part
    std::vector<Mesh> all_;
};
}  // namespace rq::io

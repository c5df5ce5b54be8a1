#include <io/detail/GLTFMaterialsRead.h>

#include <fmt/format.h>

#include <io/detail/Materials.h>
#include <io/detail/screenColour.h>

namespace rq::io
{
namespace
{
Material materialOf(const tinygltf::PbrMetallicRoughness &from)
{
    Material material;
    for (size_t c = 0; c < 3 && c < from.baseColorFactor.size(); ++c)
        material.colour[c] = toScreen(from.baseColorFactor[c]);
    // Factors of a picture say nothing without it.
    if (from.metallicRoughnessTexture.index >= 0)
        return material;
    material.metalness = std::clamp(from.metallicFactor, 0.0, 1.0);
    material.roughness = std::clamp(from.roughnessFactor, 0.0, 1.0);
    if (material.roughness >= 1.0 && material.metalness <= 0.0)
        material.roughness = -1.0;
    return material;
}
}  // namespace

GLTFNamedMaterials::GLTFNamedMaterials(const tinygltf::Model &model)
{
    for (size_t i = 0; i < model.materials.size(); ++i)
    {
        std::string name = model.materials[i].name.empty() ? fmt::format("material{}", i) : model.materials[i].name;
        while (materials.has(name))
            name += fmt::format(".{}", i);
        setMaterial(materials, name, materialOf(model.materials[i].pbrMetallicRoughness));
        names.push_back(std::move(name));
    }
}
}  // namespace rq::io

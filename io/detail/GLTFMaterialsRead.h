#pragma once

#include <host/bas/Options.h>
#include <io/detail/GLTFModel.h>

namespace rq::io
{
/// The names of a file's materials, and the dictionary "materials" that tells what they mean.
struct GLTFNamedMaterials
{
    explicit GLTFNamedMaterials(const tinygltf::Model &model);

    std::vector<std::string> names;  ///< no two are the same; those without one are called "material0" and so on
    BAS_Options materials;
};
}  // namespace rq::io

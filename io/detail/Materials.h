#pragma once

#include <array>
#include <optional>

#include <host/mod/Edit.h>

namespace rq::io
{
/// What a surface is made of.
struct Material
{
    std::array<double, 3> colour{1.0, 1.0, 1.0};  ///< red, green and blue as they look on a screen
    double roughness = -1.0;                      ///< from 0, polished, to 1, dull; negative for a matt surface
    double metalness = 0.0;                       ///< 0 to 1

    bool operator==(const Material &) const = default;
};

// The dictionary "materials" of a detail tells what the names of materials mean: under each name stand red, green and blue,
// and perhaps the roughness, and perhaps behind it the metalness.

void setMaterial(BAS_Options &materials, std::string_view name, const Material &material);

/// Nothing when the name stands for something else, or for nothing.
std::optional<Material> findMaterial(const BAS_Options &materials, const BAS_StringHolder &name);

/// Write the dictionary, unless it is empty.
void writeMaterials(MOD_Edit &edit, BAS_Options materials);

/// The attribute that holds the dictionary; null when there is none.
const ELM_Attribute *findMaterials(const MSH_Detail &detail);
}  // namespace rq::io

#pragma once

#include <memory>
#include <string>
#include <vector>

#include <apps/viewport/Item.h>

namespace rq::viewport
{
/// A material and its colour, as it looks on the screen.
struct MaterialRow
{
    std::string name;
    BAS_Vec3f colour;
};

/// The colours of the materials that an item's elements are of; clay for what has none.
struct MaterialColours
{
    Found found;                    ///< bytes of red, green and blue
    std::vector<MaterialRow> rows;  ///< what is not told has a colour that follows from its name
    bool isTold = false;            ///< whether the file tells any of them
    uint64_t key = 0;               ///< equal for the same colours; 0: never equal
};
using MaterialColoursHandle = std::shared_ptr<const MaterialColours>;

/// What `MaterialColours::key` is to be.
uint64_t materialKey(const Item &item);

/// Null when nothing has a material.
MaterialColoursHandle makeMaterialColours(const Item &item, uint64_t key);

/// All materials of a scene, each name once, in the order of names.
std::vector<MaterialRow> materialsOf(const Scene &scene);
}  // namespace rq::viewport

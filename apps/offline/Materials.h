#pragma once

#include <vector>

#include <apps/offline/ElementValues.h>

namespace rq::offline
{
/// What a surface is made of.
struct Material
{
    BAS_Vec3f colour{0.0f};   ///< linear light, 0 to 1
    float roughness = -1.0f;  ///< 0 to 1 for a surface that also mirrors, negative for a matt one
};

/// What has no colour of its own looks like clay.
Material clay();

/// The materials that the elements of a primitive name.
///
/// Shape  the string attribute "material" names them; the dictionary "materials" of the detail tells what they are, as red,
///        green, blue and perhaps roughness under the name.  One that it does not tell has a colour that follows from its
///        name
class Materials
{
public:
    Materials() = default;
    explicit Materials(const RQ_Primitive &primitive);

    /// Clay where no material is named.
    const Material &at(const Element &element) const;

private:
    std::vector<Material> materials_{clay()};
    std::vector<int32_t> of_;  // each entry of the attribute
    RQ_Owner owner_ = RQ_OWNER_INVALID;
};
}  // namespace rq::offline

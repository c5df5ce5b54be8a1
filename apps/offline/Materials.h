#pragma once

#include <vector>

#include <apps/SurfaceMaterials.h>
#include <apps/offline/ElementValues.h>

namespace rq::offline
{
/// What a surface is made of.
struct Material
{
    BAS_Vec3f colour{0.0f};   ///< linear light, 0 to 1
    float roughness = -1.0f;  ///< 0 to 1 for a surface that also mirrors, negative for a matt one
    float metalness = 0.0f;   ///< 0 to 1: how much of what mirrors is bare metal, of the colour
};

/// What has no colour of its own looks like clay.
Material clay();

/// The materials that the elements of a primitive are of.  One that the file does not tell has a colour that follows from
/// its name.
class Materials
{
public:
    Materials() = default;
    explicit Materials(const RQ_Primitive &primitive);

    /// Clay where there is none.
    const Material &at(const Element &element) const;

private:
    app::SurfaceMaterials surface_;
    std::vector<Material> materials_{clay()};
};
}  // namespace rq::offline

#include <apps/offline/Drawable.h>

#include <algorithm>

namespace rq::offline
{
namespace
{
std::vector<BAS_Mat4d> matricesOf(const RQ_Primitive &primitive, const BAS_Mat4d &placement)
{
    const RQ_TransformHandle &transform = primitive.getPrimitiveTransform();
    std::vector<BAS_Mat4d> matrices(size_t(std::max(1, transform ? transform->getSegments() : 1)));
    for (size_t i = 0; i < matrices.size(); ++i)
    {
        if (transform)
            transform->getMatrix(matrices[i], int(i));
        // A product with the identity is not always exact, and what stays in place is not copied.
        if (placement != BAS_Mat4d())
            matrices[i] = matrices[i] * placement;
    }
    return matrices;
}
}  // namespace

Drawable::Drawable(const RQ_PrimitiveHandle &primitive, const Placing &placing)
    : primitive_(primitive), palette_(placing.palette), matrices_(matricesOf(*primitive, placing.matrix)),
      colours_(*primitive, {placing.palette->name()}, placing.palette->components()),
      roughness_(*primitive, {"roughness"}, 1), widths_(*primitive, {"width", "pscale"}, 1), materials_(*primitive),
      scale_(Affine(matrices_[0]).scale()), unit_(placing.unit)
{}

Drawable::~Drawable() = default;

float Drawable::radiusOf(const Element &element, float fallback) const
{
    if (!widths_)
        return fallback * float(unit_);
    const float radius = float(0.5 * scale_) * widths_.at(element);
    return radius > 0.0f && std::isfinite(radius) ? radius : 0.0f;
}

void Drawable::shade(int64_t item, float u, float v, Hit &hit) const
{
    hit.normal = hit.facetNormal;
    hit.shadowOrigin = hit.position;
    const Place place = locate(item, u, v, hit);
    hit.material = palette_->showsMaterials() ? materials_.at(place.elements[0]) : clay();
    if (roughness_ && palette_->showsMaterials())
        if (const float roughness = roughness_.tripleAt(place).x; std::isfinite(roughness))
            hit.material.roughness = std::clamp(roughness, 0.0f, 1.0f);
    colourAt(place, hit);
}

void Drawable::colour(int64_t item, Hit &hit) const
{
    if (!hit.coloured)
        colourAt(locate(item, 0.0f, 0.0f, hit), hit);
}

void Drawable::colourAt(const Place &place, Hit &hit) const
{
    if (!colours_)
        return;
    const BAS_Vec3f value = colours_.tripleAt(place);
    hit.coloured = isFinite(value);
    if (hit.coloured)
        hit.material.colour = palette_->colour(value, colours_.components());
}
}  // namespace rq::offline

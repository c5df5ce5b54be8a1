#include <apps/offline/Drawable.h>

#include <apps/offline/Image.h>
#include <host/bas/Parallel.h>
#include <rq/data/Positions.h>

namespace rq::offline
{
namespace
{
// What has no colour of its own looks like clay.
const BAS_Vec3f kClay(0.66f, 0.63f, 0.585f);

// A point costs about 5 ns.
constexpr int64_t kPointsPerTask = 16384;
}  // namespace

ElementValues::ElementValues(const RQ_Primitive &primitive, std::initializer_list<const char *> names, int components)
{
    for (const char *name : names)
        if (const RQ_DataArrayHandle &array = primitive.findAttribute(name, owner_, 0);
            array && array->getTupleSize() >= components)
        {
            values_ = Values<float>(array);
            return;
        }
}

int64_t ElementValues::entry(const Element &element) const
{
    return owner_ == RQ_OWNER_VERTEX    ? element.vertex
           : owner_ == RQ_OWNER_POINT   ? element.point
           : owner_ == RQ_OWNER_UNIFORM ? element.uniform
                                        : 0;
}

BAS_Vec3f ElementValues::tripleAt(const Element &element) const
{
    const int64_t at = entry(element);
    return {values_(at, 0), values_(at, 1), values_(at, 2)};
}

Drawable::Drawable(const RQ_PrimitiveHandle &primitive, const BAS_Mat4d &placement)
    : primitive_(primitive), colours_(*primitive, {"Cd"}, 3), widths_(*primitive, {"width", "pscale"}, 1)
{
    if (const RQ_TransformHandle &transform = primitive->getPrimitiveTransform())
        transform->getMatrix(matrix_, 0);
    matrix_ = matrix_ * placement;
    scale_ = std::cbrt(std::abs(matrix_.determinant()));
}

Drawable::~Drawable() = default;

std::vector<BAS_Vec3f> Drawable::place(const RQ_DataArrayHandle &positions) const
{
    const Positions from(positions);
    std::vector<BAS_Vec3f> points(size_t(from.entries()));
    host::parallelFor(from.entries(), kPointsPerTask, [&](int64_t i) { points[size_t(i)] = BAS_Vec3f(from[i] * matrix_); });
    return points;
}

BAS_Vec3f Drawable::colourOf(const Element &element) const { return colours_ ? colours_.tripleAt(element) : kClay; }

float Drawable::radiusOf(const Element &element, float fallback) const
{
    if (!widths_)
        return fallback;
    const float radius = float(0.5 * scale_) * widths_.at(element);
    return radius > 0.0f && std::isfinite(radius) ? radius : 0.0f;
}

void Drawable::shade(int64_t item, float u, float v, Hit &hit) const
{
    hit.normal = hit.facetNormal;
    hit.shadowOrigin = hit.position;
    BAS_Vec3f colour = shadeItem(item, u, v, hit);
    if (!isFinite(colour))
        colour = kClay;
    // Files hold colours as they look on a screen.
    for (int channel = 0; channel < 3; ++channel)
        hit.colour[channel] = decodeSRGB(std::clamp(colour[channel], 0.0f, 1.0f));
}
}  // namespace rq::offline

#include <apps/offline/Drawable.h>

#include <algorithm>
#include <cmath>

#include <apps/offline/Image.h>
#include <host/bas/Parallel.h>
#include <rq/attrib/AttributeList.h>
#include <rq/data/Positions.h>

namespace rq::offline
{
namespace
{
// What has no colour of its own looks like clay.
const BAS_Vec3f kClay(0.66f, 0.63f, 0.585f);

// A point costs about 5 ns.
constexpr int64_t kPointsPerTask = 16384;

bool isFinite(const BAS_Vec3f &v) { return std::isfinite(v.x + v.y + v.z); }
}  // namespace

CornerValues::CornerValues(const RQ_Primitive &primitive, const char *name)
{
    const RQ_DataArrayHandle &array = primitive.findAttribute(name, owner_, 0);
    if (array && array->getTupleSize() >= 3)
        values_ = Values<float>(array);
}

BAS_Vec3f CornerValues::at(int64_t triangle, int corner, int64_t point) const
{
    const int64_t entry = owner_ == RQ_OWNER_VERTEX    ? 3 * triangle + corner
                          : owner_ == RQ_OWNER_POINT   ? point
                          : owner_ == RQ_OWNER_UNIFORM ? triangle
                                                       : 0;
    return {values_(entry, 0), values_(entry, 1), values_(entry, 2)};
}

Drawable::Drawable(const RQ_PrimitiveHandle &primitive, const BAS_Mat4d &placement)
    : primitive_(primitive), normals_(*primitive, "N"), colours_(*primitive, "Cd")
{
    BAS_Mat4d own;
    if (const RQ_TransformHandle &transform = primitive->getPrimitiveTransform())
        transform->getMatrix(own, 0);
    const BAS_Mat4d matrix = own * placement;
    normalMatrix_ = matrix.inverse().transposed();
    scale_ = std::cbrt(std::abs(matrix.determinant()));

    const RQ_AttributeListHandle &list = primitive->getPointAttributes();
    const Positions positions(list ? list->get("P", 0) : nullptr);
    points_.resize(size_t(positions.entries()));
    host::parallelFor(positions.entries(), kPointsPerTask,
                      [&](int64_t i) { points_[size_t(i)] = BAS_Vec3f(positions[i] * matrix); });
    if (primitive->getVertexList())
        corners_ = Values<int32_t>(primitive->getVertexList());
    else
        for (const char *name : {"width", "pscale"})
            if (RQ_DataArrayHandle array = list ? list->get(name, 0) : nullptr; array && widths_.entries() == 0)
                widths_ = Values<float>(array);
}

float Drawable::radius(int64_t point, float fallback) const
{
    if (widths_.entries() == 0)
        return fallback;
    const float radius = float(0.5 * scale_) * widths_(point, 0);
    return radius > 0.0f && std::isfinite(radius) ? radius : 0.0f;
}

void Drawable::shade(int64_t index, float u, float v, Hit &hit) const
{
    hit.normal = hit.facetNormal;
    hit.shadowOrigin = hit.position;
    BAS_Vec3f colour = kClay;
    if (corners_.entries() == 0)
    {
        if (colours_)
            colour = colours_.at(0, 0, index);
    }
    else
    {
        const float weights[3] = {1.0f - u - v, u, v};
        BAS_Vec3f normal(0.0f), blend(0.0f), lift(0.0f);
        for (int i = 0; i < 3; ++i)
        {
            const int64_t point = corners_[3 * index + i];
            const BAS_Vec3f cornerSide = cornerNormal(index, i, point, hit.facetNormal);
            normal += cornerSide * weights[i];

            // Rays from a coarse but smooth surface start above its facets, so that these do not shade themselves
            // (Hanika, "Hacking the Shadow Terminator", 2021).
            const float below = std::min(0.0f, (hit.position - points_[size_t(point)]) ^ cornerSide);
            lift -= cornerSide * (below * weights[i]);
            if (colours_)
                blend += colours_.at(index, i, point) * weights[i];
        }
        if (normal.length2() > 0.0f)
            hit.normal = normal.normalized();
        hit.shadowOrigin += lift;
        if (colours_)
            colour = blend;
    }
    if (!isFinite(colour))
        colour = kClay;
    // Files hold colours as they look on a screen.
    for (int channel = 0; channel < 3; ++channel)
        hit.colour[channel] = decodeSRGB(std::clamp(colour[channel], 0.0f, 1.0f));
}

// On the side of the facet that the viewer sees; the facet's own where the attribute has none.
BAS_Vec3f Drawable::cornerNormal(int64_t triangle, int corner, int64_t point, const BAS_Vec3f &facet) const
{
    if (!normals_)
        return facet;
    BAS_Vec3d turned;
    normalMatrix_.multDirMatrix(BAS_Vec3d(normals_.at(triangle, corner, point)), turned);
    const double length = turned.length();
    if (!(length > 0.0) || !std::isfinite(length))
        return facet;
    const BAS_Vec3f normal(turned / length);
    return (normal ^ facet) < 0.0f ? -normal : normal;
}
}  // namespace rq::offline

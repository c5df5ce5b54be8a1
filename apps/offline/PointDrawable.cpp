#include <apps/offline/PointDrawable.h>

#include <embree3/rtcore.h>
#include <rq/attrib/AttributeList.h>

namespace rq::offline
{
PointDrawable::PointDrawable(const RQ_PrimitiveHandle &points, const BAS_Mat4d &placement)
    : Drawable(points, placement), points_(place(points->getPointAttributes()->get("P")))
{}

// A cloud without widths gets spheres that nearly touch when its points are spread over a surface.
float PointDrawable::radius(size_t point) const
{
    const float fallback = std::clamp(0.6f / std::sqrt(float(points_.size())), 5e-4f, 0.03f);
    return radiusOf({.point = int64_t(point)}, fallback);
}

RTCGeometryTy *PointDrawable::makeGeometry(RTCDeviceTy *device) const
{
    if (points_.empty())
        return nullptr;
    const RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_SPHERE_POINT);
    auto *spheres = static_cast<float *>(
        rtcSetNewGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT4, 4 * sizeof(float), points_.size()));
    for (size_t i = 0; i < points_.size(); ++i)
    {
        std::copy_n(&points_[i].x, 3, spheres + 4 * i);
        spheres[4 * i + 3] = radius(i);
    }
    return geometry;
}

void PointDrawable::addTo(Outline &outline) const
{
    const size_t stride = size_t(Outline::stride(int64_t(points_.size())));
    for (size_t i = 0; i < points_.size(); ++i)
        outline.add(points_[i], radius(i), i % stride == 0);
}

BAS_Vec3f PointDrawable::shadeItem(int64_t point, float, float, Hit &) const { return colourOf({.point = point}); }
}  // namespace rq::offline

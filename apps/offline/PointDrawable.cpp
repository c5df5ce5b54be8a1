#include <apps/offline/PointDrawable.h>

#include <embree3/rtcore.h>
#include <rq/attrib/AttributeList.h>

namespace rq::offline
{
PointDrawable::PointDrawable(const RQ_PrimitiveHandle &points, const Placing &placing)
    : Drawable(points, placing), points_(points->getPointAttributes(), matrices())
{}

// A cloud without widths gets spheres that nearly touch when its points are spread over a surface.
float PointDrawable::radius(int64_t point) const
{
    const float fallback = std::clamp(0.6f / std::sqrt(float(points_.entries())), 5e-4f, 0.03f);
    return radiusOf({.point = point}, fallback);
}

RTCGeometryTy *PointDrawable::makeGeometry(RTCDeviceTy *device) const
{
    if (points_.entries() == 0)
        return nullptr;
    const RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_SPHERE_POINT);
    rtcSetGeometryTimeStepCount(geometry, unsigned(points_.steps()));
    for (int step = 0; step < points_.steps(); ++step)
    {
        auto *spheres =
            static_cast<float *>(rtcSetNewGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, unsigned(step), RTC_FORMAT_FLOAT4,
                                                         4 * sizeof(float), size_t(points_.entries())));
        for (int64_t i = 0; i < points_.entries(); ++i)
        {
            std::copy_n(&points_.at(i, step).x, 3, spheres + 4 * i);
            spheres[4 * i + 3] = radius(i);
        }
    }
    return geometry;
}

void PointDrawable::addTo(Outline &outline) const
{
    const int64_t stride = Outline::stride(points_.entries());
    for (int step = 0; step < points_.steps(); ++step)
        for (int64_t i = 0; i < points_.entries(); ++i)
            outline.add(points_.at(i, step), radius(i), i % stride == 0);
}

Place PointDrawable::locate(int64_t point, float, float, Hit &) const { return {{{.point = point}}}; }
}  // namespace rq::offline

#pragma once

#include <apps/offline/Drawable.h>
#include <apps/offline/PlacedPoints.h>

namespace rq::offline
{
/// Points as spheres of their width, or of one that suits their number.
class PointDrawable final : public Drawable
{
public:
    PointDrawable(const RQ_PrimitiveHandle &points, const Placing &placing);

    RTCGeometryTy *makeGeometry(RTCDeviceTy *device) const override;
    void addTo(Outline &outline) const override;

protected:
    Place locate(int64_t point, float u, float v, Hit &hit) const override;

private:
    float radius(int64_t point) const;

    PlacedPoints points_;
};
}  // namespace rq::offline

#pragma once

#include <apps/offline/Drawable.h>

namespace rq::offline
{
/// Points as spheres of their width, or of one that suits their number.
class PointDrawable final : public Drawable
{
public:
    PointDrawable(const RQ_PrimitiveHandle &points, const BAS_Mat4d &placement);

    RTCGeometryTy *makeGeometry(RTCDeviceTy *device) const override;
    void addTo(Outline &outline) const override;

protected:
    BAS_Vec3f shadeItem(int64_t point, float u, float v, Hit &hit) const override;

private:
    float radius(size_t point) const;

    std::vector<BAS_Vec3f> points_;
};
}  // namespace rq::offline

#pragma once

#include <apps/offline/Drawable.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace rq::offline
{
/// A mesh of triangles that share points, smooth where it has normals.
class TriangleDrawable final : public Drawable
{
public:
    /// All faces have three corners.
    TriangleDrawable(const RQ_PolygonMeshHandle &mesh, const BAS_Mat4d &placement);

    RTCGeometryTy *makeGeometry(RTCDeviceTy *device) const override;
    void addTo(Outline &outline) const override;

protected:
    BAS_Vec3f shadeItem(int64_t triangle, float u, float v, Hit &hit) const override;

private:
    BAS_Vec3f cornerNormal(const Element &corner, const BAS_Vec3f &facet) const;

    std::vector<BAS_Vec3f> points_;
    Values<int32_t> corners_;
    ElementValues normals_;
    BAS_Mat4d normalMatrix_;
};
}  // namespace rq::offline

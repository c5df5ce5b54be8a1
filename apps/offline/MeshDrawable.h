#pragma once

#include <apps/offline/Drawable.h>
#include <apps/offline/PlacedPoints.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace rq::offline
{
/// A mesh of triangles, or of convex quads, that share points; smooth where it has normals.
class MeshDrawable final : public Drawable
{
public:
    /// All faces have three corners, or all have four.  Where some edges are cuts that convexing made, the vertex attribute
    /// "__edge" tells which.
    MeshDrawable(const RQ_PolygonMeshHandle &mesh, const Placing &placing);

    RTCGeometryTy *makeGeometry(RTCDeviceTy *device) const override;
    void addTo(Outline &outline) const override;
    int64_t sharedBytes() const override { return points_.sharedBytes(); }

protected:
    Place locate(int64_t face, float u, float v, Hit &hit) const override;

private:
    BAS_Vec3f cornerNormal(const Element &corner, const Hit &hit, const Affine &placed) const;
    void bend(const Place &place, Hit &hit) const;
    float edgeDistance(int64_t face, const Hit &hit) const;

    PlacedPoints points_;
    Values<int32_t> corners_;
    int cornersPerFace_;
    std::vector<ElementValues> normals_;  // of each segment
    std::vector<Affine> placed_;
    Values<uint8_t> edges_;
};
}  // namespace rq::offline

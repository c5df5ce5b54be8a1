#pragma once

#include <array>

#include <apps/offline/Drawable.h>
#include <apps/offline/UnitShape.h>
#include <host/bas/BoundingBox.h>
#include <rq/surface/PrimQuadricMesh.h>

namespace rq::offline
{
/// Quadrics of one kind as the exact surfaces that they are, whatever their number: a quadric takes 100 bytes and no facets.
class QuadricDrawable final : public Drawable
{
public:
    QuadricDrawable(const BAS_IntrusivePtr<RQ_PrimQuadricMesh> &mesh, const Placing &placing);

    RTCGeometryTy *makeGeometry(RTCDeviceTy *device) const override;
    void addTo(Outline &outline) const override;

    /// What a quadric covers of the scene at a step of its motion; empty when it is flattened to nothing.
    BAS_BoundingBox bounds(int64_t quadric, int step) const;

    /// Where a ray meets a quadric first.  The normal is the scene's, of any length.
    bool cross(int64_t quadric, const Line &ray, float time, double least, double most, Crossing &first) const;

protected:
    Place locate(int64_t quadric, float u, float v, Hit &hit) const override;

private:
    // Where x, y, z and the origin go.
    using Rows = std::array<BAS_Vec3f, 4>;
    struct Quadric
    {
        Rows out, in;  // from the unit shape to the scene, and back
        bool flat;     // there is no way back
    };

    Quadric placed(BAS_Mat4d matrix) const;
    const Quadric &at(int64_t quadric, int step) const { return quadrics_[size_t(quadric) * size_t(steps_) + size_t(step)]; }
    Quadric atTime(int64_t quadric, float time) const;

    UnitShape shape_;
    int64_t count_;
    int steps_;
    std::vector<Quadric> quadrics_;  // at all steps of the first one's motion, then of the next
};
}  // namespace rq::offline

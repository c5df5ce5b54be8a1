#pragma once

#include <memory>

#include <apps/offline/Drawable.h>
#include <host/bas/BoundingBox.h>
#include <rq/prim/PrimInstance.h>

namespace rq::offline
{
class Group;

/// One group many times: a search structure of placements, each of which leads into the one of the group.
///
/// Shape  rays are turned into the group's space, so that instances may hold instances.  Between two segments of their
///        transforms the matrices are mixed, so that points move on straight lines.  "Cd" colours what has no colour itself
/// Cost   192 bytes an instance, 96 a segment of those that move, and their part of the search tree, whatever the group
/// holds
class InstanceDrawable final : public Drawable
{
public:
    InstanceDrawable(const BAS_IntrusivePtr<RQ_PrimInstance> &instances, const std::shared_ptr<const Group> &group,
                     const Placing &placing);

    RTCGeometryTy *makeGeometry(RTCDeviceTy *device) const override;
    void addTo(Outline &outline) const override;

    const Group &group() const { return *group_; }

    /// What an instance covers at a step of its motion.
    BAS_BoundingBox bounds(int64_t instance, int step) const;

    /// From the space of the group's rays to that of this drawable's, and back.
    Affine out(int64_t instance, float time) const;
    Affine in(int64_t instance, float time) const;

protected:
    Place locate(int64_t instance, float u, float v, Hit &hit) const override;

private:
    const Affine &at(int64_t instance, int step) const { return out_[size_t(instance) * size_t(steps_) + size_t(step)]; }

    std::shared_ptr<const Group> group_;
    int64_t count_;
    int steps_;
    std::vector<Affine> out_;  // of all steps of the first instance, then of the next
    std::vector<Affine> in_;   // of each instance; none where they move
};
}  // namespace rq::offline

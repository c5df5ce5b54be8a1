#include <apps/offline/InstanceDrawable.h>

#include <apps/offline/Group.h>
#include <apps/offline/Search.h>
#include <host/bas/Parallel.h>

namespace rq::offline
{
namespace
{
// Two matrices of an instance cost some 200 ns.
constexpr int64_t kInstancesPerTask = 512;

const InstanceDrawable &drawableOf(const void *pointer) { return *static_cast<const InstanceDrawable *>(pointer); }

// What the search structure calls.  Rays come one by one.

void boundsOf(const RTCBoundsFunctionArguments *call)
{
    const BAS_BoundingBox box = drawableOf(call->geometryUserPtr).bounds(call->primID, int(call->timeStep));
    const BAS_Vec3f low = box.minimum(), high = box.maximum();
    *call->bounds_o = {low.x, low.y, low.z, 0.0f, high.x, high.y, high.z, 0.0f};
}

RTCRay inside(const InstanceDrawable &drawable, uint32_t instance, const RTCRay &ray)
{
    return makeRay(drawable.in(instance, ray.time).ray(rayOf(ray)), ray.tnear, ray.tfar);
}

void intersect(const RTCIntersectFunctionNArguments *call)
{
    auto &outer = *reinterpret_cast<RTCRayHit *>(call->rayhit);
    auto &search = *static_cast<Search *>(call->context);
    if (!call->valid[0] || search.here.depth == InstancePath::kDeepest)
        return;
    const InstanceDrawable &drawable = drawableOf(call->geometryUserPtr);
    RTCRayHit inner = {};
    inner.ray = inside(drawable, call->primID, outer.ray);
    inner.hit.geomID = inner.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;

    const int depth = search.here.depth++;
    search.here.steps[depth] = {&drawable, call->primID};
    drawable.group().intersect(inner, search);
    --search.here.depth;
    if (inner.hit.geomID == RTC_INVALID_GEOMETRY_ID)
        return;
    // A hit that came through a deeper instance has noted its own end of the way; the number of the instance tells.
    if (inner.hit.instID[0] == RTC_INVALID_GEOMETRY_ID)
        search.found.depth = depth + 1;
    search.found.steps[depth] = search.here.steps[depth];
    outer.ray.tfar = inner.ray.tfar;
    outer.hit = inner.hit;
    outer.hit.instID[0] = 0;
}

void occlude(const RTCOccludedFunctionNArguments *call)
{
    auto &outer = *reinterpret_cast<RTCRay *>(call->ray);
    auto &search = *static_cast<Search *>(call->context);
    if (!call->valid[0] || search.here.depth == InstancePath::kDeepest)
        return;
    const InstanceDrawable &drawable = drawableOf(call->geometryUserPtr);
    RTCRay inner = inside(drawable, call->primID, outer);
    ++search.here.depth;
    drawable.group().occluded(inner, search);
    --search.here.depth;
    outer.tfar = std::min(outer.tfar, inner.tfar);  // minus infinity where something lies in the way
}
}  // namespace

InstanceDrawable::InstanceDrawable(const BAS_IntrusivePtr<RQ_PrimInstance> &instances,
                                   const std::shared_ptr<const Group> &group, const Placing &placing)
    : Drawable(instances, placing), group_(group), count_(instances->entries()),
      steps_(std::max(int(matrices().size()), instances->getTransforms()->getMotionSegments())),
      out_(size_t(count_) * size_t(steps_)), in_(size_t(steps_ == 1 ? count_ : 0))
{
    const Affine unplace = Affine(group->placement()).inverse();
    host::parallelFor(count_, kInstancesPerTask, [&](int64_t i) {
        for (int step = 0; step < steps_; ++step)
        {
            BAS_Mat4d own;
            instances->getTransforms()->getMatrix(own, i, step);
            const Affine whole(matrices()[std::min(size_t(step), matrices().size() - 1)]);
            out_[size_t(i) * size_t(steps_) + size_t(step)] = unplace.then(Affine(own)).then(whole);
        }
        if (steps_ == 1)
            in_[size_t(i)] = at(i, 0).inverse();
    });
}

RTCGeometryTy *InstanceDrawable::makeGeometry(RTCDeviceTy *device) const
{
    const RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_USER);
    rtcSetGeometryTimeStepCount(geometry, unsigned(steps_));
    rtcSetGeometryUserPrimitiveCount(geometry, unsigned(count_));
    rtcSetGeometryUserData(geometry, const_cast<InstanceDrawable *>(this));
    rtcSetGeometryBoundsFunction(geometry, boundsOf, nullptr);
    rtcSetGeometryIntersectFunction(geometry, intersect);
    rtcSetGeometryOccludedFunction(geometry, occlude);
    return geometry;
}

Affine InstanceDrawable::out(int64_t instance, float time) const
{
    const Moment moment(time, steps_);
    const Affine &before = at(instance, moment.step);
    return moment.part > 0.0f ? before.mixed(at(instance, moment.step + 1), moment.part) : before;
}

Affine InstanceDrawable::in(int64_t instance, float time) const
{
    return in_.empty() ? out(instance, time).inverse() : in_[size_t(instance)];
}

BAS_BoundingBox InstanceDrawable::bounds(int64_t instance, int step) const
{
    const BAS_BoundingBox inner = group_->bounds();
    BAS_BoundingBox box;
    if (const double volume = std::abs(at(instance, step).volume()); inner.isEmpty() || !(volume > 0.0))
        return box;  // what is flattened has no way back
    const BAS_Vec3f ends[2] = {inner.minimum(), inner.maximum()};
    for (int i = 0; i < 8; ++i)
        box.enlarge(at(instance, step).point(BAS_Vec3f(ends[i & 1].x, ends[i >> 1 & 1].y, ends[i >> 2].z)));
    return box;
}

void InstanceDrawable::addTo(Outline &outline) const
{
    // Few instances frame by all points of the group, many by less and less.
    constexpr int64_t kMost = 2000000;
    const std::vector<BAS_Vec3f> &points = group_->outline().points();
    const int64_t stride = std::max<int64_t>(1, count_ * steps_ * int64_t(points.size()) / kMost);
    const int64_t frames = Outline::stride(count_ * steps_ * int64_t(points.size()) / stride);
    int64_t number = 0;
    for (const Affine &place : out_)
        for (size_t i = size_t(number % stride); i < points.size(); i += size_t(stride))
            outline.add(place.point(points[i]), 0.0f, number++ % frames == 0);
}

Place InstanceDrawable::locate(int64_t instance, float, float, Hit &) const { return {{{instance, instance, instance}}}; }
}  // namespace rq::offline

#pragma once

#include <cstdint>

#include <embree3/rtcore.h>

#include <apps/offline/Affine.h>

namespace rq::offline
{
class InstanceDrawable;

/// The instances that a ray goes through, the outermost first.
struct InstancePath
{
    struct Step
    {
        const InstanceDrawable *drawable;
        uint32_t instance;
    };
    static constexpr int kDeepest = 32;

    Step steps[kDeepest];
    int depth = 0;
};

/// One ray's way through nested search structures: where it is, and which way led to the nearest hit so far.
struct Search : RTCIntersectContext
{
    Search() { rtcInitIntersectContext(this); }

    InstancePath here;
    InstancePath found;
};

inline RTCRay makeRay(const Ray &from, float least, float most)
{
    RTCRay ray = {};
    ray.org_x = from.origin.x;
    ray.org_y = from.origin.y;
    ray.org_z = from.origin.z;
    ray.dir_x = from.direction.x;
    ray.dir_y = from.direction.y;
    ray.dir_z = from.direction.z;
    ray.time = from.time;
    ray.tnear = least;
    ray.tfar = most;
    ray.mask = ~0u;
    return ray;
}

inline Ray rayOf(const RTCRay &ray)
{
    return {{ray.org_x, ray.org_y, ray.org_z}, {ray.dir_x, ray.dir_y, ray.dir_z}, ray.time};
}
}  // namespace rq::offline

#pragma once

#include <apps/offline/Integrator.h>
#include <apps/offline/Samples.h>

namespace rq::offline
{
/// Follows the paths of one pixel after the other.
///
/// Threads  safe to use from any thread
class Tracer
{
public:
    Tracer(const Scene &scene, const Camera &camera, const Settings &settings);

    Pixel pixel(int x, int y) const;

private:
    struct Path;

    Pixel sample(int x, int y, const Samples &samples, uint32_t index) const;
    BAS_Vec3f follow(Path path, Pixel &first) const;
    bool meetsFloor(const Ray &ray, Hit &hit, float &fade) const;
    BAS_Vec3f shown(const Hit &hit, const Ray &ray) const;
    BAS_Vec3f sunOn(const Hit &hit, const BAS_Vec3f &out, const Path &path) const;
    bool bounce(const Hit &hit, const BAS_Vec3f &out, Path &path) const;
    void note(const Hit &hit, float distance, bool isFloor, Pixel &pixel) const;

    const Scene &scene_;
    const Camera &camera_;
    const Settings &settings_;
    float floorHeight_;
    Affine toFile_;
};
}  // namespace rq::offline

#pragma once

#include <memory>
#include <string>
#include <vector>

#include <apps/offline/Drawable.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace rq::offline
{
/// Which axis of the input points up.  `Auto` takes z for what lies flat in x and y, such as terrain, and y else.
enum class UpAxis
{
    Auto,
    Y,
    Z
};

/// Geometry that rays can be shot at: polygon meshes as triangles, subdivision meshes as their smooth surface, points as
/// spheres, curves as round ribbons, meshes of quadrics as the exact surfaces.
///
/// Shape    everything is moved to the unit sphere around the origin with y up, so that neither tiny nor distant models cost
///          precision
/// Threads  filled by one thread; rays may then be shot from any
class Scene
{
public:
    Scene();
    ~Scene();
    Scene(const Scene &) = delete;
    Scene &operator=(const Scene &) = delete;

    /// Add what a primitive refines to.  Kinds that are not drawn are counted.
    void add(const RQ_PrimitiveHandle &primitive, const RQ_RefineParms *parms);

    /// Build the search structure.  Call once, after the last `add`.
    void commit(UpAxis up);

    bool intersect(const BAS_Vec3f &origin, const BAS_Vec3f &direction, Hit &hit) const;

    /// True when anything lies along the ray.
    bool occluded(const BAS_Vec3f &origin, const BAS_Vec3f &direction) const;

    const Outline &outline() const { return outline_; }

    /// The primitives that no kind of the above came out of.
    int64_t notDrawn() const { return notDrawn_; }

    /// What is wrong with subdivision meshes; those that have no surface are drawn as their cages.
    const std::vector<std::string> &complaints() const { return complaints_; }

private:
    struct Embree;

    void add(const RQ_PrimitiveHandle &primitive, const RQ_RefineParms *parms, int depth);
    void addMesh(const RQ_PrimPolygonMesh &mesh);
    BAS_Mat4d placement(UpAxis up) const;

    std::unique_ptr<Embree> embree_;
    std::vector<RQ_PrimitiveHandle> leaves_;
    std::vector<std::unique_ptr<Drawable>> drawables_;
    Outline outline_;
    int64_t notDrawn_ = 0;
    std::vector<std::string> complaints_;
};
}  // namespace rq::offline

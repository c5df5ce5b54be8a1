#pragma once

#include <memory>
#include <string>
#include <vector>

#include <rq/data/Values.h>
#include <rq/prim/Primitive.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace offline
{
/// A ray's first hit, as the integrator wants it: in the object's own colours, with normals on the viewer's side.
struct Hit
{
    BAS_Vec3f position;
    BAS_Vec3f shadowOrigin;  ///< where rays to lights start: lifted off the facets of a smooth surface
    BAS_Vec3f facetNormal;
    BAS_Vec3f normal;
    BAS_Vec3f colour;
    float distance;
};

/// Geometry that rays can be shot at: polygon meshes as triangles, point meshes as spheres.
///
/// Reads primitives through `RQ_Primitive` alone.
class Scene
{
public:
    Scene();
    ~Scene();
    Scene(const Scene &) = delete;
    Scene &operator=(const Scene &) = delete;

    /// Add what a primitive refines to.  Kinds that are not drawn are counted.
    void add(const RQ_PrimitiveHandle &primitive);

    /// Build the search structure.  Call once, after the last `add`.
    void commit();

    bool intersect(const BAS_Vec3f &origin, const BAS_Vec3f &direction, Hit &hit) const;

    /// True when anything lies along the ray.
    bool occluded(const BAS_Vec3f &origin, const BAS_Vec3f &direction) const;

    /// Of everything that can be drawn.
    const BAS_BoundingBox &bounds() const { return bounds_; }
    int64_t triangles() const { return triangles_; }
    int64_t notDrawn() const { return notDrawn_; }

private:
    struct Embree;
    struct Object;

    void addMesh(const RQ_PrimPolygonMesh &mesh);
    void addPoints(const RQ_Primitive &points);

    std::unique_ptr<Embree> embree_;
    std::vector<std::unique_ptr<Object>> objects_;
    BAS_BoundingBox bounds_;
    int64_t triangles_ = 0;
    int64_t notDrawn_ = 0;
};
}  // namespace offline

#pragma once

#include <vector>

#include <rq/data/Values.h>
#include <rq/prim/Primitive.h>

namespace rq::offline
{
/// A ray's first hit, with normals on the viewer's side.
struct Hit
{
    BAS_Vec3f position;
    BAS_Vec3f shadowOrigin;  ///< where rays to lights start: lifted off the facets of a smooth surface
    BAS_Vec3f facetNormal;
    BAS_Vec3f normal;
    BAS_Vec3f colour;  ///< linear light, 0 to 1
};

/// Three floats of an attribute for each corner of a triangle, whatever element they are bound to.
class CornerValues
{
public:
    CornerValues() = default;

    /// Nothing when the primitive has no such attribute of three components or more.
    CornerValues(const RQ_Primitive &primitive, const char *name);

    explicit operator bool() const { return values_.entries() > 0; }
    BAS_Vec3f at(int64_t triangle, int corner, int64_t point) const;

private:
    Values<float> values_;
    RQ_Owner owner_ = RQ_OWNER_INVALID;
};

/// One primitive as rays see it: triangles that share points, or spheres around points when it has no triangles.
class Drawable
{
public:
    /// `placement` moves from the primitive's space, after its own transform, to that of the scene.  Triangles need a vertex
    /// list of three entries a face.
    Drawable(const RQ_PrimitiveHandle &primitive, const BAS_Mat4d &placement);

    const std::vector<BAS_Vec3f> &points() const { return points_; }
    const Values<int32_t> &corners() const { return corners_; }

    /// The radius of the sphere around `point`; `fallback` without a "width" or "pscale".
    float radius(int64_t point, float fallback) const;

    /// Fill in colour, normal and shadow origin of a hit of triangle or point `index`.
    void shade(int64_t index, float u, float v, Hit &hit) const;

private:
    BAS_Vec3f cornerNormal(int64_t triangle, int corner, int64_t point, const BAS_Vec3f &facet) const;

    RQ_PrimitiveHandle primitive_;
    std::vector<BAS_Vec3f> points_;
    Values<int32_t> corners_;
    Values<float> widths_;
    CornerValues normals_;
    CornerValues colours_;
    BAS_Mat4d normalMatrix_;
    double scale_;
};
}  // namespace rq::offline

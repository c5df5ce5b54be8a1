#pragma once

#include <initializer_list>

#include <apps/offline/Outline.h>
#include <rq/data/Values.h>
#include <rq/prim/Primitive.h>

struct RTCDeviceTy;
struct RTCGeometryTy;

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

/// An element of a primitive, by its entry in the lists of each owner.
struct Element
{
    int64_t vertex = 0;
    int64_t point = 0;
    int64_t uniform = 0;
};

/// An attribute as floats, whatever owner it has.
class ElementValues
{
public:
    ElementValues() = default;

    /// The first attribute of these names; nothing when the primitive has none of `components` or more.
    ElementValues(const RQ_Primitive &primitive, std::initializer_list<const char *> names, int components);

    explicit operator bool() const { return values_.entries() > 0; }
    float at(const Element &element) const { return values_(entry(element), 0); }
    BAS_Vec3f tripleAt(const Element &element) const;

private:
    int64_t entry(const Element &element) const;

    Values<float> values_;
    RQ_Owner owner_ = RQ_OWNER_INVALID;
};

/// One primitive as rays see it, made of items: triangles, spheres, pieces of curves or quadrics.
///
/// Ownership  holds the primitive
/// Threads    immutable once built, safe to read from any thread
class Drawable
{
public:
    /// `placement` moves from the primitive's space, after its own transform, to that of the scene.
    Drawable(const RQ_PrimitiveHandle &primitive, const BAS_Mat4d &placement);
    virtual ~Drawable();
    Drawable(const Drawable &) = delete;
    Drawable &operator=(const Drawable &) = delete;

    /// The search structure's form of this, for the caller to commit; it reads this for as long as it lives.  Null without
    /// items.
    virtual RTCGeometryTy *makeGeometry(RTCDeviceTy *device) const = 0;

    virtual void addTo(Outline &outline) const = 0;

    /// Fill in colour, normal and shadow origin of a hit at (u, v) of an item.
    void shade(int64_t item, float u, float v, Hit &hit) const;

protected:
    /// The colour as attributes give it; may set the normal and the shadow origin, which are those of the facet.
    virtual BAS_Vec3f shadeItem(int64_t item, float u, float v, Hit &hit) const = 0;

    /// Positions in the scene.
    std::vector<BAS_Vec3f> place(const RQ_DataArrayHandle &positions) const;

    const RQ_Primitive &primitive() const { return *primitive_; }
    const BAS_Mat4d &matrix() const { return matrix_; }

    /// "Cd", or what everything without it is made of.
    BAS_Vec3f colourOf(const Element &element) const;

    /// Half of the "width" or "pscale" in the scene; `fallback` without.
    float radiusOf(const Element &element, float fallback) const;

private:
    RQ_PrimitiveHandle primitive_;
    BAS_Mat4d matrix_;
    ElementValues colours_;
    ElementValues widths_;
    double scale_;
};
}  // namespace rq::offline

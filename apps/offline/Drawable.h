#pragma once

#include <apps/offline/Affine.h>
#include <apps/offline/ElementValues.h>
#include <apps/offline/Materials.h>
#include <apps/offline/Outline.h>
#include <apps/offline/Palette.h>

struct RTCDeviceTy;
struct RTCGeometryTy;

namespace rq::offline
{
/// A ray's first hit, with normals on the viewer's side.
struct Hit
{
    BAS_Vec3f position{0.0f};
    BAS_Vec3f shadowOrigin{0.0f};  ///< where rays to lights start: lifted off the facets of a smooth surface
    BAS_Vec3f facetNormal{0.0f};
    BAS_Vec3f normal{0.0f};
    Material material;
    float distance = 0.0f;  ///< in lengths of the ray's direction
    float time = 0.0f;
    float edge = std::numeric_limits<float>::infinity();  ///< how far away the next edge of a face is, where that is asked
    bool coloured = false;                                ///< by an attribute of its own
};

/// How primitives become drawables.
struct Placing
{
    BAS_Mat4d matrix;   ///< from a primitive's space, after its own transform, to the one that rays search
    double unit = 1.0;  ///< how large the whole is in that space
    const Palette *palette = nullptr;
};

/// One primitive as rays see it, made of items: faces, spheres, pieces of curves, quadrics or instances.
///
/// Ownership  holds the primitive
/// Threads    immutable once built, safe to read from any thread
class Drawable
{
public:
    Drawable(const RQ_PrimitiveHandle &primitive, const Placing &placing);
    virtual ~Drawable();
    Drawable(const Drawable &) = delete;
    Drawable &operator=(const Drawable &) = delete;

    /// The search structure's form of this, for the caller to commit; it reads this for as long as it lives.  Null without
    /// items.
    virtual RTCGeometryTy *makeGeometry(RTCDeviceTy *device) const = 0;

    virtual void addTo(Outline &outline) const = 0;

    /// How many bytes of the primitive's own memory the search reads.
    virtual int64_t sharedBytes() const { return 0; }

    /// Fill in what a hit at (u, v) of an item shows.  Position, facet normal and time are given.
    void shade(int64_t item, float u, float v, Hit &hit) const;

    /// Colour what has no colour of its own by an item of this.
    void colour(int64_t item, Hit &hit) const;

protected:
    /// Where on the primitive a hit lies; may set the normal, the shadow origin and the edge's distance.
    virtual Place locate(int64_t item, float u, float v, Hit &hit) const = 0;

    const RQ_Primitive &primitive() const { return *primitive_; }
    const Palette &palette() const { return *palette_; }

    /// From the primitive's space to the one that rays search: one for each segment of its transform.
    const std::vector<BAS_Mat4d> &matrices() const { return matrices_; }

    /// Half of the "width" or "pscale" in the space that rays search; `fallback`, for a whole of size 1,
    /// without.
    float radiusOf(const Element &element, float fallback) const;

private:
    void colourAt(const Place &place, Hit &hit) const;

    RQ_PrimitiveHandle primitive_;
    const Palette *palette_;
    std::vector<BAS_Mat4d> matrices_;
    ElementValues colours_;
    ElementValues roughness_;
    ElementValues widths_;
    Materials materials_;
    double scale_;
    double unit_;
};
}  // namespace rq::offline

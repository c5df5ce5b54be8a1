#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <apps/offline/Drawable.h>
#include <host/bas/BoundingBox.h>
#include <rq/surface/PrimPolygonMesh.h>

class RQ_PrimPlacedVolume;
struct RTCSceneTy;
struct RTCRay;
struct RTCRayHit;

namespace rq::offline
{
class Group;
struct Search;

/// Which axis of the input points up.  `Auto` takes z for what lies flat in x and y, such as terrain, and y else.
enum class UpAxis
{
    Auto,
    Y,
    Z
};

/// What all groups of a scene have in common while it is put together.
struct Stage
{
    RTCDeviceTy *device = nullptr;
    const RQ_RefineParms *parms = nullptr;
    Palette *palette = nullptr;
    std::map<const RQ_Primitive *, std::shared_ptr<Group>> shared{};  ///< what instances show, by their geometry
    std::vector<std::string> complaints{};
    int64_t notDrawn = 0;
};

/// Primitives of one space, and the structure that rays search.
///
/// Shape    rays search the space of the primitives as it is, so that positions need not be copied; but where that is tiny,
///          huge or far from its origin everything is moved to the unit sphere, for the precision
/// Threads  filled by one thread; rays may then be shot from any
class Group
{
public:
    explicit Group(Stage &stage);
    ~Group();
    Group(const Group &) = delete;
    Group &operator=(const Group &) = delete;

    /// Add what a primitive refines to.  Kinds that are not drawn are counted.
    void add(const RQ_PrimitiveHandle &primitive) { add(primitive, 0); }

    /// Build the search structure.  Call once, after the last `add`.
    void commit(UpAxis up);

    /// From the primitives' space to the one that rays search, and to the unit sphere with y up.
    const BAS_Mat4d &placement() const { return placement_; }
    const BAS_Mat4d &toUnit() const { return toUnit_; }

    // In the space that rays search.
    BAS_BoundingBox bounds() const;
    const Outline &outline() const { return outline_; }
    void addTo(Outline &outline) const;
    void intersect(RTCRayHit &ray, Search &search) const;
    void occluded(RTCRay &ray, Search &search) const;

    const Drawable &drawable(uint32_t number) const { return *drawables_[number]; }
    int64_t sharedBytes() const;

private:
    void add(const RQ_PrimitiveHandle &primitive, int depth);
    void skip(const RQ_PrimPlacedVolume &volume);
    void addMesh(const RQ_PrimPolygonMesh &mesh);
    void addLeaf(const RQ_PrimitiveHandle &leaf);
    std::unique_ptr<Drawable> makeDrawable(const RQ_PrimitiveHandle &leaf);
    std::shared_ptr<Group> sharedGroup(const RQ_PrimitiveHandle &geometry);

    struct Release
    {
        void operator()(RTCSceneTy *scene) const;
    };

    Stage &stage_;
    std::vector<RQ_PrimitiveHandle> leaves_;
    std::vector<std::unique_ptr<Drawable>> drawables_;
    Outline outline_;
    BAS_Mat4d placement_, toUnit_;
    std::unique_ptr<RTCSceneTy, Release> scene_;
};
}  // namespace rq::offline

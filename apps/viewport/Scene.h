#pragma once

#include <memory>
#include <string>
#include <vector>

#include <apps/viewport/DrawStyle.h>
#include <host/bas/BoundingBox.h>
#include <rq/prim/Primitive.h>

class RQ_RefineCache;
class RQ_RefineParms;

namespace rq::viewport
{
/// A primitive to be drawn, and where: `placement` follows the primitive's own transform.
struct Shown
{
    RQ_PrimitiveHandle primitive;
    BAS_Mat4d placement;
};

struct Item;

/// Primitives made ready to draw: meshes as triangles with normals, curves as segments, instances as placements.
///
/// Nothing of a scene is in the graphics card yet; `Display` uploads what a picture needs of it.
///
/// Ownership  shares primitives and arrays
/// Threads    made on any thread (work is spread over the workers), immutable then.  Progress and interruption as of every
///            long operation: an interrupted one gives null
class Scene
{
public:
    /// `previous`, the scene shown before, lends what it derived from arrays that are still the same, and how it cut
    /// faces that are: frames of an animation are cut once.  `cache`, if given, keeps cuts and normals by cusp
    /// angle for longer.
    static std::shared_ptr<const Scene> make(const std::vector<Shown> &shown, const Preparation &preparation,
                                             const RQ_RefineParms *parms = nullptr, const Scene *previous = nullptr,
                                             RQ_RefineCache *cache = nullptr);
    ~Scene();

    const std::vector<Item> &items() const { return items_; }

    /// Around everything, and around one of the shown primitives; points that lie nowhere do not count.
    const BAS_BoundingBox &bounds() const { return bounds_; }
    BAS_BoundingBox bounds(size_t shown) const;

    /// Where single precision counts from: the middle of everything.
    BAS_Vec3d middle() const;

    /// Triangles, those of all copies.
    int64_t triangles() const;

    /// What could not be drawn, or not as it should be: sentences for a person.
    const std::vector<std::string> &complaints() const { return complaints_; }

private:
    friend class SceneMaker;
    Scene();

    Preparation preparation_;
    std::vector<Item> items_;
    BAS_BoundingBox bounds_;
    std::vector<std::string> complaints_;
};
using SceneHandle = std::shared_ptr<const Scene>;
}  // namespace rq::viewport

#pragma once

#include <memory>
#include <string>
#include <vector>

#include <apps/offline/Group.h>

namespace rq::offline
{
/// Geometry that rays can be shot at: polygon meshes as quads or triangles, subdivision meshes as their smooth surface,
/// points as spheres, curves as round ribbons, meshes of quadrics as the exact surfaces, instances as what they show.
///
/// Shape    everything appears moved to the unit sphere around the origin with y up, where cameras and lights need not ask
///          how large a model is
/// Threads  filled by one thread; rays may then be shot from any
class Scene
{
public:
    /// `parms` (null: all defaults) says how primitives are refined; it must live until `commit`.
    explicit Scene(const RQ_RefineParms *parms = nullptr, const Look &look = {});
    ~Scene();
    Scene(const Scene &) = delete;
    Scene &operator=(const Scene &) = delete;

    /// Add what a primitive refines to.  Kinds that are not drawn are counted.
    void add(const RQ_PrimitiveHandle &primitive) { whole_->add(primitive); }

    /// Build the search structure.  Call once, after the last `add`.
    void commit(UpAxis up);

    bool intersect(const Ray &ray, Hit &hit) const;

    /// True when anything lies along the ray.
    bool occluded(const Ray &ray) const;

    const Outline &outline() const { return outline_; }

    /// From the space of the file to that of the rays.
    const Affine &fromFile() const { return fromFile_; }

    /// The primitives that no kind of the above came out of.
    int64_t notDrawn() const { return stage_.notDrawn; }

    /// What is wrong with subdivision meshes, those that have no surface being drawn as their cages; that volumes are not
    /// drawn at all; and that nothing has the attribute that is to be shown.
    const std::vector<std::string> &complaints() const { return stage_.complaints; }

    /// How many bytes of the primitives' own memory rays search in place, those behind instances counted once.
    int64_t sharedBytes() const;

    Look::Shade shade() const { return look_.shade; }

private:
    struct Device;

    Look look_;
    Palette palette_;
    std::unique_ptr<Device> device_;
    Stage stage_;
    std::unique_ptr<Group> whole_;
    Outline outline_;
    Affine fromFile_;
    Affine out_, in_;  // from the space that the whole is searched in, and back
};
}  // namespace rq::offline

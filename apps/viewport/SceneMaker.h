#pragma once

#include <unordered_map>

#include <apps/viewport/MaterialColours.h>
#include <rq/prim/PrimInstance.h>
#include <rq/surface/PrimQuadricMesh.h>
#include <rq/surface/PrimSubdivisionMesh.h>

namespace rq::viewport
{
/// Takes primitives apart until each is a shape that can be drawn.
class SceneMaker
{
public:
    SceneMaker(Scene &scene, const RQ_RefineParms *parms, const Scene *previous, RQ_RefineCache *cache);

    void add(size_t shown, const Shown &entry);

    /// After the last one: what only the whole scene tells.
    void finish();

private:
    void add(const RQ_PrimitiveHandle &primitive, const Placements &outer, int depth);
    void addRefined(const RQ_Primitive &primitive, const Placements &outer, int depth);
    void addInstances(const RQ_PrimInstance &instance, const Placements &outer, int depth);
    void addQuadrics(const RQ_PrimQuadricMesh &quadrics, const Placements &outer);
    void addSurface(const RQ_SubdivisionMeshHandle &cage, const Placements &outer);
    void addMesh(const RQ_PolygonMeshHandle &mesh, const Placements &outer);
    void addCurves(const RQ_CurveMeshHandle &curves, const Placements &outer);
    void addPoints(const RQ_PrimitiveHandle &points, const Placements &outer);

    FormHandle meshForm(const RQ_PrimPolygonMesh &mesh, uint64_t key, std::string &why) const;

    /// The form of a key from the last scene or this one, or what `make(why)` gives.
    template <class Make> FormHandle form(uint64_t key, Make &&make);

    /// `transform` is that of the primitive itself; the form's primitive colours the item unless it has none.
    void addItem(const FormHandle &form, const RQ_PrimitiveHandle &primitive, const RQ_TransformHandle &transform,
                 const Placements &outer);

    MaterialColoursHandle materialsFor(const Item &item);

    /// Copies of copies: each of `transforms`, and then `base`, within each of `outer`.
    bool multiplied(const RQ_TransformArray &transforms, const RQ_TransformHandle &base,
                    const RQ_AttributeListHandle &attributes, const Placements &outer, Placements &all);

    void complain(const std::string &what);

    Scene &scene_;
    const RQ_RefineParms *parms_;
    RQ_RefineCache *cache_;
    std::unordered_map<uint64_t, FormHandle> known_;               // by key
    std::unordered_map<uint64_t, FormHandle> cutAlike_;            // by topology
    std::unordered_map<uint64_t, MaterialColoursHandle> colours_;  // by key
    size_t shown_ = 0;
};
}  // namespace rq::viewport

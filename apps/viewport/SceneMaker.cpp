#include <apps/viewport/SceneMaker.h>

#include <algorithm>
#include <atomic>

#include <fmt/format.h>

#include <apps/refineShared.h>
#include <apps/subdivide.h>
#include <host/bas/hashBytes.h>
#include <rq/bridge/PrimPlacedVolume.h>
#include <rq/data/DANumeric.h>
#include <rq/prim/RefineParms.h>
#include <rq/surface/PrimPointMesh.h>

namespace rq::viewport
{
namespace
{
// Refinement that goes on for longer does not end.
constexpr int kDeepest = 32;

// More copies than this take longer to draw than anybody waits.
constexpr int64_t kMostCopies = int64_t(1) << 24;

// Pieces of a curve's span, as far as the picture can tell.
constexpr double kPiecesPerSpan = 8.0;

BAS_Mat4d matrixOf(const RQ_TransformHandle &transform)
{
    BAS_Mat4d matrix;
    if (transform)
        transform->getMatrix(matrix, 0);
    return matrix;
}

RQ_DataArrayHandle indices(int64_t count, int64_t (*of)(int64_t, int64_t), int64_t inner)
{
    const BAS_IntrusivePtr<RQ_DANumeric<int32_t>> list(new RQ_DANumeric<int32_t>(count));
    for (int64_t i = 0; i < count; ++i)
        list->data()[i] = int32_t(of(i, inner));
    return list;
}

// Attributes of `outer` copies of `inner` copies, counted through.
RQ_AttributeListHandle multiplied(const RQ_AttributeListHandle &outer, int64_t outers, const RQ_AttributeListHandle &inner,
                                  int64_t inners)
{
    RQ_AttributeListHandle all = inner;
    if (inner && outers > 1)
        all = inner->createIndirect(indices(
            outers * inners, [](int64_t i, int64_t n) { return i % n; }, inners));
    if (!outer)
        return all;
    const RQ_AttributeListHandle around = inners == 1
                                              ? outer
                                              : outer->createIndirect(indices(
                                                    outers * inners, [](int64_t i, int64_t n) { return i / n; }, inners));
    return all ? all->mergeNewAttributes(around) : around;
}
// The scheme and the tags of a surface.  One whose tags have no id is made anew each time.
uint64_t surfaceOptions(const RQ_PrimSubdivisionMesh &cage)
{
    static std::atomic<uint64_t> unknown{0};
    uint64_t hash = host::hashWord(0, uint64_t(cage.scheme()));
    for (auto tag = cage.beginTags(); !(tag == cage.endTag()); ++tag)
    {
        hash = host::hashWord(hash, host::hashBytes((*tag).name().view()));
        for (const auto *arrays : {&(*tag).getAllInt(), &(*tag).getAllReal(), &(*tag).getAllString()})
            for (const RQ_DataArrayHandle &array : *arrays)
                hash = host::hashWord(hash, array->getDataId() >= 0 ? uint64_t(array->getDataId()) : ~unknown++);
    }
    return hash;
}
}  // namespace

SceneMaker::SceneMaker(Scene &scene, const RQ_RefineParms *parms, const Scene *previous, RQ_RefineCache *cache)
    : scene_(scene), parms_(parms), cache_(cache)
{
    if (!previous)
        return;
    for (const Item &item : previous->items())
    {
        if (item.form->key != 0)
            known_.emplace(item.form->key, item.form);
        if (item.form->topology != 0)
            cutAlike_.emplace(item.form->topology, item.form);
        if (item.materials && item.materials->key != 0)
            colours_.emplace(item.materials->key, item.materials);
    }
}

void SceneMaker::add(size_t shown, const Shown &entry)
{
    shown_ = shown;
    add(entry.primitive, {{entry.placement}, nullptr}, 0);
}

void SceneMaker::add(const RQ_PrimitiveHandle &primitive, const Placements &outer, int depth)
{
    if (!primitive)
        return;
    if (const auto *instance = dynamic_cast<const RQ_PrimInstance *>(primitive.get()))
        return addInstances(*instance, outer, depth);
    if (const auto *quadrics = dynamic_cast<const RQ_PrimQuadricMesh *>(primitive.get()))
        return addQuadrics(*quadrics, outer);
    if (const auto cage = boost::dynamic_pointer_cast<RQ_PrimSubdivisionMesh>(primitive))
        return addSurface(cage, outer);
    if (const auto mesh = boost::dynamic_pointer_cast<RQ_PrimPolygonMesh>(primitive))
        return addMesh(mesh, outer);
    if (const auto *curve = dynamic_cast<const RQ_PrimCurve *>(primitive.get()))
        return addCurves(RQ_CurveMeshHandle(new RQ_PrimCurveMesh(*curve)), outer);
    if (const auto curves = boost::dynamic_pointer_cast<RQ_PrimCurveMesh>(primitive))
        return addCurves(curves, outer);
    if (dynamic_cast<const RQ_PrimPointMesh *>(primitive.get()))
        return addPoints(primitive, outer);
    addRefined(*primitive, outer, depth);
}

void SceneMaker::addRefined(const RQ_Primitive &primitive, const Placements &outer, int depth)
{
    bool isRefined = false;
    if (depth < kDeepest)
        for (const RQ_PrimitiveHandle &simpler : app::refineShared(primitive, parms_, &isRefined))
            if (simpler.get() != &primitive)
                add(simpler, outer, depth + 1);
    if (isRefined)
        return;
    if (const auto *volume = dynamic_cast<const RQ_PrimPlacedVolume *>(&primitive))
        addCurves(volume->createOutline(), outer);
    else
        complain(fmt::format("{}: nothing of this kind can be drawn", primitive.className()));
}

bool SceneMaker::multiplied(const RQ_TransformArray &transforms, const RQ_TransformHandle &base,
                            const RQ_AttributeListHandle &attributes, const Placements &outer, Placements &all)
{
    const int64_t inners = transforms.entries(), outers = int64_t(outer.matrices.size());
    if (inners > kMostCopies / std::max<int64_t>(1, outers))
    {
        complain(fmt::format("{} copies in each of {} are more than can be drawn", inners, outers));
        return false;
    }
    const BAS_Mat4d baseMatrix = matrixOf(base);
    all.matrices.reserve(size_t(inners * outers));
    for (const BAS_Mat4d &around : outer.matrices)
        for (int64_t i = 0; i < inners; ++i)
        {
            BAS_Mat4d matrix;
            transforms.getMatrix(matrix, i, 0);
            all.matrices.push_back(matrix * baseMatrix * around);
        }
    all.attributes = viewport::multiplied(outer.attributes, outers, attributes, inners);
    return !all.matrices.empty();
}

void SceneMaker::addInstances(const RQ_PrimInstance &instance, const Placements &outer, int depth)
{
    Placements all;
    if (depth < kDeepest && instance.entries() > 0 &&
        multiplied(*instance.getTransforms(), instance.getPrimitiveTransform(), instance.getInstanceAttributes(), outer,
                   all))
        add(instance.getGeometry(), all, depth + 1);
}

// All are one shape, drawn where each stands.
void SceneMaker::addQuadrics(const RQ_PrimQuadricMesh &quadrics, const Placements &outer)
{
    Placements all;
    const RQ_QuadricHandle shape = quadrics.makeQuadric(0);
    if (!shape || !shape->init(quadrics.getDetailAttributes(), nullptr) ||
        !multiplied(*quadrics.getTransforms(), quadrics.getBaseTransform(), quadrics.getVertexAttributes(), outer, all))
        return;
    if (const RQ_PolygonMeshHandle mesh = shape->refineToPolygonMesh(parms_))
        addMesh(mesh, all);
}

void SceneMaker::addSurface(const RQ_SubdivisionMeshHandle &cage, const Placements &outer)
{
    const int wanted = scene_.preparation_.subdivisionLevel;
    const int level = wanted >= 0 ? wanted : app::smoothLevel(*cage);
    const uint64_t key = wholeKey(*cage, cage->getVertexList(), scene_.preparation_, surfaceOptions(*cage));
    const FormHandle found = form(key, [&](std::string &why) -> FormHandle {
        std::vector<std::string> complaints;
        const RQ_PolygonMeshHandle smooth = level > 0 ? app::subdivide(*cage, level, complaints) : nullptr;
        for (const std::string &complaint : complaints)
            complain(complaint);
        const FormHandle made = meshForm(smooth ? *smooth : *cage, key, why);
        if (!made || !smooth)
            return made;
        const auto own = std::make_shared<Form>(*made);
        own->primitive = smooth;
        return own;
    });
    addItem(found, cage, cage->getPrimitiveTransform(), outer);
}

FormHandle SceneMaker::meshForm(const RQ_PrimPolygonMesh &mesh, uint64_t key, std::string &why) const
{
    const auto alike = cutAlike_.find(topologyKey(mesh));
    return makeMeshForm(mesh, scene_.preparation_, key, alike == cutAlike_.end() ? nullptr : alike->second, cache_, why);
}

void SceneMaker::addMesh(const RQ_PolygonMeshHandle &mesh, const Placements &outer)
{
    const uint64_t key = meshKey(*mesh, scene_.preparation_);
    addItem(form(key, [&](std::string &why) { return meshForm(*mesh, key, why); }), mesh, mesh->getPrimitiveTransform(),
            outer);
}

void SceneMaker::addCurves(const RQ_CurveMeshHandle &curves, const Placements &outer)
{
    const uint64_t options = parms_ ? uint64_t(parms_->hash()) << 32 | parms_->getFlags() : 0;
    const uint64_t key = wholeKey(*curves, curves->getCurveCountArray().rawOffsets(), scene_.preparation_, options);
    const FormHandle found = form(key, [&](std::string &why) -> FormHandle {
        const RQ_CurveMeshHandle linear = curves->validate(&why) ? curves->refineToLinear(parms_, kPiecesPerSpan) : nullptr;
        if (!linear)
        {
            why = why.empty() ? "curves that cannot be evaluated" : why;
            return nullptr;
        }
        const FormHandle made = makeCurveForm(*linear, key, why);
        if (!made || linear == curves)
            return made;
        const auto own = std::make_shared<Form>(*made);
        own->primitive = linear;
        return own;
    });
    addItem(found, curves, curves->getPrimitiveTransform(), outer);
}

void SceneMaker::addPoints(const RQ_PrimitiveHandle &points, const Placements &outer)
{
    const RQ_DataArrayHandle positions = points->getPointAttributes() ? points->getPointAttributes()->get("P") : nullptr;
    const uint64_t key = positions && positions->getDataId() >= 0 ? uint64_t(positions->getDataId()) << 1 | 1 : 0;
    addItem(form(key, [&](std::string &why) { return makePointForm(*points, key, why); }), points,
            points->getPrimitiveTransform(), outer);
}

template <class Make> FormHandle SceneMaker::form(uint64_t key, Make &&make)
{
    if (const auto found = known_.find(key); found != known_.end())
        return found->second;
    std::string why;
    const FormHandle made = make(why);
    if (!made)
        complain(why);
    else if (key != 0)
        known_.emplace(key, made);
    return made;
}

void SceneMaker::complain(const std::string &what)
{
    std::vector<std::string> &complaints = scene_.complaints_;
    if (std::find(complaints.begin(), complaints.end(), what) == complaints.end())
        complaints.push_back(what);
}
}  // namespace rq::viewport

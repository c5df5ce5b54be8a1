#include <apps/offline/Group.h>

#include <algorithm>
#include <cmath>

#include <apps/offline/CurveDrawable.h>
#include <apps/offline/InstanceDrawable.h>
#include <apps/offline/MeshDrawable.h>
#include <apps/offline/PointDrawable.h>
#include <apps/offline/QuadricDrawable.h>
#include <apps/offline/Search.h>
#include <apps/offline/placement.h>
#include <apps/refineShared.h>
#include <apps/subdivide.h>
#include <host/bas/Parallel.h>
#include <rq/bridge/PrimPlacedVolume.h>
#include <rq/prim/PrimitiveType.h>

namespace rq::offline
{
namespace
{
// Edges sharper than this stay sharp on models that bring no normals.
constexpr double kCuspAngle = 60.0;

// Refinement that goes on for longer does not end.
constexpr int kDeepest = 32;

// Embree ends the program over a ray that is not finite, or lies farther away.  Placements make such rays.
bool canBeFollowed(const RTCRay &ray)
{
    constexpr float kFar = 1e18f;
    const float reach = std::abs(ray.org_x) + std::abs(ray.org_y) + std::abs(ray.org_z) + std::abs(ray.dir_x) +
                        std::abs(ray.dir_y) + std::abs(ray.dir_z);
    return reach <= kFar && ray.tnear <= ray.tfar;
}

bool hasPositions(const RQ_Primitive &primitive, RQ_Owner owner)
{
    const RQ_AttributeListHandle &list = primitive.getAttributeList(owner);
    return Positions(list ? list->get("P") : nullptr).isValid();
}

/// Whether this is drawn as it is, not as what it refines to.
bool isDrawnWhole(const RQ_Primitive &primitive)
{
    if (const auto *curves = dynamic_cast<const RQ_PrimCurveMesh *>(&primitive))
        return curves->getBasis() == RQ_BASIS_LINEAR && hasPositions(primitive, RQ_OWNER_VERTEX) && curves->validate();
    if (const auto *quadrics = dynamic_cast<const RQ_PrimQuadricMesh *>(&primitive))
        return quadrics->getQuadricCount() > 0;
    if (const auto *instances = dynamic_cast<const RQ_PrimInstance *>(&primitive))
        return instances->entries() > 0;
    return primitive.getPrimitiveType() == RQ_PRIM_POINT_MESH && hasPositions(primitive, RQ_OWNER_POINT);
}

/// The mesh as rays search it: convex quads or triangles.  Null when it has no positions or no such faces.
RQ_PolygonMeshHandle searchable(const RQ_PolygonMeshHandle &mesh, bool edges)
{
    if (!hasPositions(*mesh, RQ_OWNER_POINT))
        return nullptr;
    const auto isAll = [](const RQ_PolygonMeshHandle &cut, int64_t count) {
        return cut && cut->getFaceCount() > 0 && cut->getMinVertexCount() == count && cut->getMaxVertexCount() == count;
    };
    if (isAll(mesh, 4))
        if (const RQ_PolygonMeshHandle quads = mesh->convex(4); isAll(quads, 4))
            return quads;
    const RQ_PolygonMeshHandle triangles = mesh->convex(3, false, edges);
    return isAll(triangles, 3) ? triangles : nullptr;
}

bool isFlatInZ(const BAS_BoundingBox &box)
{
    constexpr float kFlat = 0.2f;
    const BAS_Vec3f size = box.size();
    return !box.isEmpty() && size.z < kFlat * std::min(size.x, size.y);
}
}  // namespace

void Group::Release::operator()(RTCSceneTy *scene) const { rtcReleaseScene(scene); }

Group::Group(Stage &stage) : stage_(stage), scene_(rtcNewScene(stage.device))
{
    rtcSetSceneFlags(scene_.get(), RTC_SCENE_FLAG_ROBUST);
}

Group::~Group() = default;

void Group::add(const RQ_PrimitiveHandle &primitive, int depth)
{
    if (!primitive)
        return;
    if (const auto *cage = dynamic_cast<const RQ_PrimSubdivisionMesh *>(primitive.get()))
    {
        const RQ_PolygonMeshHandle smooth = app::subdivide(*cage, app::smoothLevel(*cage), stage_.complaints);
        return addMesh(smooth ? *smooth : static_cast<const RQ_PrimPolygonMesh &>(*cage));
    }
    if (const auto *mesh = dynamic_cast<const RQ_PrimPolygonMesh *>(primitive.get()))
        return addMesh(*mesh);
    if (const auto *curve = dynamic_cast<const RQ_PrimCurve *>(primitive.get()))
        return add(RQ_PrimitiveHandle(new RQ_PrimCurveMesh(*curve)), depth + 1);
    if (isDrawnWhole(*primitive))
        return addLeaf(primitive);

    bool isRefined = false;
    if (depth < kDeepest)
        for (const RQ_PrimitiveHandle &simpler : app::refineShared(*primitive, stage_.parms, &isRefined))
            if (simpler != primitive)
                add(simpler, depth + 1);
    if (isRefined)
        return;
    if (const auto *volume = dynamic_cast<const RQ_PrimPlacedVolume *>(primitive.get()))
        skip(*volume);
    else
        ++stage_.notDrawn;
}

void Group::skip(const RQ_PrimPlacedVolume &volume)
{
    const std::string complaint = std::string(volume.className()) + ": volumes are not drawn";
    std::vector<std::string> &known = stage_.complaints;
    if (std::find(known.begin(), known.end(), complaint) == known.end())
        known.push_back(complaint);
}

// Normals come first: they belong to the faces of the file, not to the triangles that these are cut into.
void Group::addMesh(const RQ_PrimPolygonMesh &mesh)
{
    if (mesh.getFaceCount() == 0)
        return;
    bool changed = false;
    const RQ_PolygonMeshHandle smooth = mesh.createVertexNormalsIfMissing("P", kCuspAngle, true, changed);
    const RQ_PolygonMeshHandle faces = smooth ? searchable(smooth, stage_.palette->showsEdges()) : nullptr;
    if (faces)
        addLeaf(faces);
    else
        ++stage_.notDrawn;
}

void Group::addLeaf(const RQ_PrimitiveHandle &leaf)
{
    stage_.palette->add(*leaf);
    leaves_.push_back(leaf);
}

std::shared_ptr<Group> Group::sharedGroup(const RQ_PrimitiveHandle &geometry)
{
    std::shared_ptr<Group> &group = stage_.shared[geometry.get()];
    if (!group)
    {
        const auto made = std::make_shared<Group>(stage_);
        made->add(geometry);
        made->commit(UpAxis::Y);
        // Filling it may have added others to the map, which does not move what it holds.
        group = made;
    }
    return group;
}

std::unique_ptr<Drawable> Group::makeDrawable(const RQ_PrimitiveHandle &leaf)
{
    const double unit = Affine(placement_).scale() / Affine(toUnit_).scale();
    const Placing placing{placement_, unit, stage_.palette};
    if (const auto mesh = boost::dynamic_pointer_cast<RQ_PrimPolygonMesh>(leaf))
        return std::make_unique<MeshDrawable>(mesh, placing);
    if (const auto curves = boost::dynamic_pointer_cast<RQ_PrimCurveMesh>(leaf))
        return std::make_unique<CurveDrawable>(curves, placing);
    if (const auto quadrics = boost::dynamic_pointer_cast<RQ_PrimQuadricMesh>(leaf))
        return std::make_unique<QuadricDrawable>(quadrics, placing);
    if (const auto instances = boost::dynamic_pointer_cast<RQ_PrimInstance>(leaf))
        return std::make_unique<InstanceDrawable>(instances, sharedGroup(instances->getGeometry()), placing);
    return std::make_unique<PointDrawable>(leaf, placing);
}

void Group::commit(UpAxis up)
{
    BAS_BoundingBox box;
    for (const RQ_PrimitiveHandle &leaf : leaves_)
        box.enlarge(finiteBounds(*leaf));
    toUnit_ = unitPlacement(box);
    if (up == UpAxis::Z || (up == UpAxis::Auto && isFlatInZ(box)))
        toUnit_ = toUnit_ * BAS_Mat4d(1, 0, 0, 0, 0, 0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1);
    if (!isWellPlaced(box))
        placement_ = toUnit_;

    for (const RQ_PrimitiveHandle &leaf : leaves_)
    {
        drawables_.push_back(makeDrawable(leaf));
        if (const RTCGeometry geometry = drawables_.back()->makeGeometry(stage_.device))
        {
            rtcCommitGeometry(geometry);
            rtcAttachGeometryByID(scene_.get(), geometry, unsigned(drawables_.size() - 1));
            rtcReleaseGeometry(geometry);
        }
    }
    addTo(outline_);
    // One thread builds the tree: its shape, and with it which of two triangles that share an edge is hit, must not depend
    // on the number of threads.
    const BAS_Threads::Limit one(1);
    rtcCommitScene(scene_.get());
}

void Group::addTo(Outline &outline) const
{
    for (const auto &drawable : drawables_)
        drawable->addTo(outline);
}

BAS_BoundingBox Group::bounds() const
{
    RTCLinearBounds ends = {};
    rtcGetSceneLinearBounds(scene_.get(), &ends);
    BAS_BoundingBox box;
    for (const RTCBounds &end : {ends.bounds0, ends.bounds1})
        if (end.lower_x <= end.upper_x)
        {
            box.enlarge(BAS_Vec3f(end.lower_x, end.lower_y, end.lower_z));
            box.enlarge(BAS_Vec3f(end.upper_x, end.upper_y, end.upper_z));
        }
    return box;
}

void Group::intersect(RTCRayHit &ray, Search &search) const
{
    if (canBeFollowed(ray.ray))
        rtcIntersect1(scene_.get(), &search, &ray);
}

void Group::occluded(RTCRay &ray, Search &search) const
{
    if (canBeFollowed(ray))
        rtcOccluded1(scene_.get(), &search, &ray);
}

int64_t Group::sharedBytes() const
{
    int64_t bytes = 0;
    for (const auto &drawable : drawables_)
        bytes += drawable->sharedBytes();
    return bytes;
}
}  // namespace rq::offline

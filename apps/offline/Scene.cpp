#include <apps/offline/Scene.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <embree3/rtcore.h>

#include <apps/offline/CurveDrawable.h>
#include <apps/offline/PointDrawable.h>
#include <apps/offline/QuadricDrawable.h>
#include <apps/offline/TriangleDrawable.h>
#include <apps/offline/subdivide.h>
#include <host/bas/BoundingBox.h>
#include <host/bas/Parallel.h>
#include <rq/attrib/AttributeList.h>
#include <rq/data/Positions.h>
#include <rq/prim/PrimitiveType.h>
#include <rq/prim/RefineList.h>

namespace rq::offline
{
namespace
{
// Edges sharper than this stay sharp on models that bring no normals.
constexpr double kCuspAngle = 60.0;

// Refinement that goes on for longer does not end.
constexpr int kDeepest = 32;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

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
    return primitive.getPrimitiveType() == RQ_PRIM_POINT_MESH && hasPositions(primitive, RQ_OWNER_POINT);
}

/// The box around a primitive, and around its points that lie somewhere when that is infinite.
BAS_BoundingBox finiteBounds(const RQ_Primitive &primitive)
{
    BAS_BoundingBox whole;
    primitive.enlargeBounds(&whole, 1);
    if (isFinite(whole.minimum()) && isFinite(whole.maximum()))
        return whole;

    // A point costs about 5 ns.
    constexpr int64_t kPointsPerBlock = 16384;
    BAS_Mat4d place;
    if (const RQ_TransformHandle &transform = primitive.getPrimitiveTransform())
        transform->getMatrix(place, 0);
    RQ_Owner owner;
    const Positions positions(primitive.findAttribute("P", owner, 0));
    return host::parallelReduce(
        positions.entries(), kPointsPerBlock, BAS_BoundingBox(),
        [&](int64_t begin, int64_t end) {
            BAS_BoundingBox box;
            for (int64_t i = begin; i < end; ++i)
                if (const BAS_Vec3f point(positions[i] * place); isFinite(point))
                    box.enlarge(point);
            return box;
        },
        [](BAS_BoundingBox &into, const BAS_BoundingBox &from) { into.enlarge(from); });
}

std::unique_ptr<Drawable> makeDrawable(const RQ_PrimitiveHandle &leaf, const BAS_Mat4d &placement)
{
    if (const auto mesh = boost::dynamic_pointer_cast<RQ_PrimPolygonMesh>(leaf))
        return std::make_unique<TriangleDrawable>(mesh, placement);
    if (const auto curves = boost::dynamic_pointer_cast<RQ_PrimCurveMesh>(leaf))
        return std::make_unique<CurveDrawable>(curves, placement);
    if (const auto quadrics = boost::dynamic_pointer_cast<RQ_PrimQuadricMesh>(leaf))
        return std::make_unique<QuadricDrawable>(quadrics, placement);
    return std::make_unique<PointDrawable>(leaf, placement);
}

RTCRay makeRay(const BAS_Vec3f &origin, const BAS_Vec3f &direction)
{
    RTCRay ray = {};
    ray.org_x = origin.x;
    ray.org_y = origin.y;
    ray.org_z = origin.z;
    ray.dir_x = direction.x;
    ray.dir_y = direction.y;
    ray.dir_z = direction.z;
    ray.tfar = kInfinity;
    ray.mask = ~0u;
    return ray;
}
}  // namespace

struct Scene::Embree
{
    RTCDevice device = rtcNewDevice(nullptr);
    RTCScene scene = rtcNewScene(device);

    Embree() { rtcSetSceneFlags(scene, RTC_SCENE_FLAG_ROBUST); }
    ~Embree()
    {
        rtcReleaseScene(scene);
        rtcReleaseDevice(device);
    }
    Embree(const Embree &) = delete;
    Embree &operator=(const Embree &) = delete;

    void attach(RTCGeometry geometry, size_t id)
    {
        rtcCommitGeometry(geometry);
        rtcAttachGeometryByID(scene, geometry, unsigned(id));
        rtcReleaseGeometry(geometry);
    }
};

Scene::Scene() : embree_(new Embree) {}
Scene::~Scene() = default;

void Scene::add(const RQ_PrimitiveHandle &primitive, const RQ_RefineParms *parms) { add(primitive, parms, 0); }

void Scene::add(const RQ_PrimitiveHandle &primitive, const RQ_RefineParms *parms, int depth)
{
    if (!primitive)
        return;
    if (const auto *cage = dynamic_cast<const RQ_PrimSubdivisionMesh *>(primitive.get()))
    {
        const RQ_PolygonMeshHandle smooth = subdivide(*cage, smoothLevel(*cage), complaints_);
        return addMesh(smooth ? *smooth : static_cast<const RQ_PrimPolygonMesh &>(*cage));
    }
    if (const auto *mesh = dynamic_cast<const RQ_PrimPolygonMesh *>(primitive.get()))
        return addMesh(*mesh);
    if (const auto *curve = dynamic_cast<const RQ_PrimCurve *>(primitive.get()))
        return add(RQ_PrimitiveHandle(new RQ_PrimCurveMesh(*curve)), parms, depth + 1);
    if (isDrawnWhole(*primitive))
        return leaves_.push_back(primitive);

    RQ_RefineList list;
    if (depth == kDeepest || !list.refine(primitive.get(), parms))
        ++notDrawn_;
    for (int i = 0; i < list.entries(); ++i)
        add(list.getPrimitive(i), parms, depth + 1);
}

// Normals come first: they belong to the faces of the file, not to the triangles that these are cut into.
void Scene::addMesh(const RQ_PrimPolygonMesh &mesh)
{
    if (mesh.getFaceCount() == 0)
        return;
    bool changed = false;
    const RQ_PolygonMeshHandle smooth = mesh.createVertexNormalsIfMissing("P", kCuspAngle, true, changed);
    const RQ_PolygonMeshHandle triangles = smooth && hasPositions(*smooth, RQ_OWNER_POINT) ? smooth->convex(3) : nullptr;
    if (triangles && triangles->getFaceCount() > 0 && triangles->getMinVertexCount() == 3 &&
        triangles->getMaxVertexCount() == 3)
        leaves_.push_back(triangles);
    else
        ++notDrawn_;
}

BAS_Mat4d Scene::placement(UpAxis up) const
{
    BAS_BoundingBox box;
    for (const RQ_PrimitiveHandle &leaf : leaves_)
        box.enlarge(finiteBounds(*leaf));
    if (box.isEmpty())
        return BAS_Mat4d();

    const BAS_Vec3d low(box.minimum()), high(box.maximum());
    const BAS_Vec3d size = high - low;
    const double radius = 0.5 * size.length();
    BAS_Mat4d place, scale, turn;
    place.setTranslation((low + high) * -0.5);
    scale.setScale(radius > 0.0 ? 1.0 / radius : 1.0);
    constexpr double kFlat = 0.2;
    if (up == UpAxis::Z || (up == UpAxis::Auto && size.z < kFlat * std::min(size.x, size.y)))
        turn = BAS_Mat4d(1, 0, 0, 0, 0, 0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1);
    return place * scale * turn;
}

void Scene::commit(UpAxis up)
{
    const BAS_Mat4d toUnit = placement(up);
    for (const RQ_PrimitiveHandle &leaf : leaves_)
    {
        drawables_.push_back(makeDrawable(leaf, toUnit));
        const Drawable &drawable = *drawables_.back();
        if (const RTCGeometry geometry = drawable.makeGeometry(embree_->device))
            embree_->attach(geometry, drawables_.size() - 1);
        drawable.addTo(outline_);
    }
    // One thread builds the tree: its shape, and with it which of two triangles that share an edge is hit, must not depend
    // on the number of threads.
    const BAS_Threads::Limit one(1);
    rtcCommitScene(embree_->scene);
}

bool Scene::intersect(const BAS_Vec3f &origin, const BAS_Vec3f &direction, Hit &hit) const
{
    RTCRayHit ray = {};
    ray.ray = makeRay(origin, direction);
    ray.hit.geomID = RTC_INVALID_GEOMETRY_ID;
    RTCIntersectContext context;
    rtcInitIntersectContext(&context);
    rtcIntersect1(embree_->scene, &context, &ray);
    if (ray.hit.geomID == RTC_INVALID_GEOMETRY_ID)
        return false;

    hit.position = origin + direction * ray.ray.tfar;
    hit.facetNormal = BAS_Vec3f(ray.hit.Ng_x, ray.hit.Ng_y, ray.hit.Ng_z).normalized();
    if ((hit.facetNormal ^ direction) > 0.0f)
        hit.facetNormal = -hit.facetNormal;
    drawables_[ray.hit.geomID]->shade(ray.hit.primID, ray.hit.u, ray.hit.v, hit);
    return true;
}

bool Scene::occluded(const BAS_Vec3f &origin, const BAS_Vec3f &direction) const
{
    RTCRay ray = makeRay(origin, direction);
    RTCIntersectContext context;
    rtcInitIntersectContext(&context);
    rtcOccluded1(embree_->scene, &context, &ray);
    return ray.tfar < 0.0f;
}
}  // namespace rq::offline

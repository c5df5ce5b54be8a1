#include <apps/offline/Scene.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <embree3/rtcore.h>

#include <apps/offline/subdivide.h>
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

// Points of one primitive that take part in framing.
constexpr size_t kOutlinePoints = 50000;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

bool isFinite(const BAS_Vec3f &v) { return std::isfinite(v.x + v.y + v.z); }

bool hasPositions(const RQ_Primitive &primitive)
{
    const RQ_AttributeListHandle &points = primitive.getPointAttributes();
    return Positions(points ? points->get("P") : nullptr).isValid();
}

/// The box around the points of a primitive that lie somewhere: a single infinite one must not blow it up.
BAS_BoundingBox finiteBounds(const RQ_Primitive &primitive)
{
    // A point costs about 5 ns.
    constexpr int64_t kPointsPerBlock = 16384;
    BAS_Mat4d place;
    if (const RQ_TransformHandle &transform = primitive.getPrimitiveTransform())
        transform->getMatrix(place, 0);
    const Positions positions(primitive.getPointAttributes()->get("P"));
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

    template <class T> T *newBuffer(RTCGeometry geometry, RTCBufferType type, RTCFormat format, size_t size, size_t count)
    {
        return static_cast<T *>(rtcSetNewGeometryBuffer(geometry, type, 0, format, size, count));
    }

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
        std::vector<std::string> complaints;
        const RQ_PolygonMeshHandle smooth = subdivide(*cage, smoothLevel(*cage), complaints);
        return addMesh(smooth ? *smooth : static_cast<const RQ_PrimPolygonMesh &>(*cage));
    }
    if (const auto *mesh = dynamic_cast<const RQ_PrimPolygonMesh *>(primitive.get()))
        return addMesh(*mesh);
    if (primitive->getPrimitiveType() == RQ_PRIM_POINT_MESH && hasPositions(*primitive))
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
    const RQ_PolygonMeshHandle triangles = smooth && hasPositions(*smooth) ? smooth->convex(3) : nullptr;
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
    lowest_ = kInfinity;
    for (const RQ_PrimitiveHandle &leaf : leaves_)
    {
        drawables_.push_back(std::make_unique<Drawable>(leaf, toUnit));
        const Drawable &drawable = *drawables_.back();
        if (drawable.corners().entries() > 0)
            attachTriangles(drawable);
        else
            attachSpheres(drawable);
        addOutline(drawable);
    }
    lowest_ = std::isfinite(lowest_) ? lowest_ : -1.0f;
    // One thread builds the tree: its shape, and with it which of two triangles that share an edge is hit, must not depend
    // on the number of threads.
    const BAS_Threads::Limit one(1);
    rtcCommitScene(embree_->scene);
}

void Scene::attachTriangles(const Drawable &drawable)
{
    const std::vector<BAS_Vec3f> &points = drawable.points();
    const Values<int32_t> &corners = drawable.corners();
    RTCGeometry geometry = rtcNewGeometry(embree_->device, RTC_GEOMETRY_TYPE_TRIANGLE);
    // Points are read 16 bytes at a time, so they need a buffer with room behind the last; corners are shared as they are.
    auto *positions =
        embree_->newBuffer<BAS_Vec3f>(geometry, RTC_BUFFER_TYPE_VERTEX, RTC_FORMAT_FLOAT3, sizeof(BAS_Vec3f), points.size());
    std::copy(points.begin(), points.end(), positions);
    rtcSetSharedGeometryBuffer(geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, corners.data(), 0, 3 * sizeof(int32_t),
                               size_t(corners.entries() / 3));
    embree_->attach(geometry, drawables_.size() - 1);
    triangles_ += corners.entries() / 3;
}

void Scene::attachSpheres(const Drawable &drawable)
{
    const std::vector<BAS_Vec3f> &points = drawable.points();
    if (points.empty())
        return;
    // A cloud without widths gets spheres that nearly touch when its points are spread over a surface.
    const float fallback = std::clamp(0.6f / std::sqrt(float(points.size())), 5e-4f, 0.03f);
    RTCGeometry geometry = rtcNewGeometry(embree_->device, RTC_GEOMETRY_TYPE_SPHERE_POINT);
    auto *spheres =
        embree_->newBuffer<float>(geometry, RTC_BUFFER_TYPE_VERTEX, RTC_FORMAT_FLOAT4, 4 * sizeof(float), points.size());
    for (size_t i = 0; i < points.size(); ++i)
    {
        std::copy_n(&points[i].x, 3, spheres + 4 * i);
        spheres[4 * i + 3] = drawable.radius(int64_t(i), fallback);
    }
    embree_->attach(geometry, drawables_.size() - 1);
    spheres_ += int64_t(points.size());
}

void Scene::addOutline(const Drawable &drawable)
{
    const std::vector<BAS_Vec3f> &points = drawable.points();
    const Values<int32_t> &corners = drawable.corners();
    const size_t count = corners.entries() > 0 ? size_t(corners.entries()) : points.size();
    const size_t step = std::max<size_t>(1, count / kOutlinePoints);
    for (size_t i = 0; i < count; ++i)
    {
        const BAS_Vec3f &point = points[corners.entries() > 0 ? size_t(corners[int64_t(i)]) : i];
        if (!isFinite(point))
            continue;
        lowest_ = std::min(lowest_, point.y);
        if (i % step == 0)
            outline_.push_back(point);
    }
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

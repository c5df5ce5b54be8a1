#include <apps/offline/Scene.h>

#include <cmath>
#include <limits>

#include <embree3/rtcore.h>

#include <host/bas/Parallel.h>
#include <rq/data/Positions.h>
#include <rq/prim/PrimCollect.h>
#include <rq/prim/PrimitiveType.h>
#include <rq/prim/RefineList.h>
#include <rq/surface/PrimPointMesh.h>

namespace
{
// Edges sharper than this stay sharp on models that bring no normals.
constexpr double kCuspAngle = 50.0;

// A neutral clay.
const BAS_Vec3f kClay(0.62f, 0.6f, 0.57f);

/// An attribute of three floats and how to find its value for a corner of a triangle.
struct CornerValues
{
    rq::Values<float> values;
    RQ_Owner owner = RQ_OWNER_INVALID;

    bool exist() const { return values.tupleSize() >= 3 && values.entries() > 0; }

    BAS_Vec3f at(int64_t triangle, int corner, int64_t point) const
    {
        const int64_t entry = owner == RQ_OWNER_VERTEX    ? 3 * triangle + corner
                              : owner == RQ_OWNER_POINT   ? point
                              : owner == RQ_OWNER_UNIFORM ? triangle
                                                          : 0;
        return {values(entry, 0), values(entry, 1), values(entry, 2)};
    }

    static CornerValues find(const RQ_Primitive &primitive, const char *name)
    {
        CornerValues found;
        const RQ_DataArrayHandle &array = primitive.findAttribute(name, found.owner, 0);
        if (array && array->getTupleSize() >= 3)
            found.values = rq::Values<float>(array);
        return found;
    }
};

/// The points of a primitive where its transform puts them.
std::vector<BAS_Vec3f> placedPoints(const RQ_Primitive &primitive)
{
    std::vector<BAS_Vec3f> placed;
    const RQ_AttributeListHandle &list = primitive.getPointAttributes();
    const rq::Positions positions(list ? list->get("P", 0) : nullptr);
    placed.resize(size_t(positions.entries()));
    BAS_Mat4d matrix;
    primitive.getPrimitiveTransform()->getMatrix(matrix, 0);
    const bool moved = !primitive.getPrimitiveTransform()->isIdentity();
    host::parallelFor(positions.entries(), 16384, [&](int64_t i) {
        placed[size_t(i)] = BAS_Vec3f(moved ? positions[i] * matrix : positions[i]);
    });
    return placed;
}

bool isFinite(const BAS_Vec3f &v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }
}  // namespace

struct offline::Scene::Embree
{
    RTCDevice device = rtcNewDevice(nullptr);
    RTCScene scene = rtcNewScene(device);

    Embree()
    {
        rtcSetSceneFlags(scene, RTC_SCENE_FLAG_ROBUST);
        rtcSetSceneBuildQuality(scene, RTC_BUILD_QUALITY_MEDIUM);
    }
    ~Embree()
    {
        rtcReleaseScene(scene);
        rtcReleaseDevice(device);
    }
};

struct offline::Scene::Object
{
    RQ_PrimitiveHandle primitive;  // keeps the arrays below alive
    std::vector<BAS_Vec3f> points;
    rq::Values<int32_t> triangles;
    CornerValues normals;
    CornerValues colours;
    BAS_Mat4d normalMatrix;
    bool placed = false;

    void shadeTriangle(int64_t triangle, float u, float v, Hit &hit) const
    {
        const float weights[3] = {1.0f - u - v, u, v};
        BAS_Vec3f corners[3], cornerNormals[3];
        BAS_Vec3f normal(0.0f), colour(0.0f);
        for (int i = 0; i < 3; ++i)
        {
            const int64_t point = triangles[3 * triangle + i];
            corners[i] = points[size_t(point)];
            cornerNormals[i] = normalAt(triangle, i, point, hit.facetNormal);
            normal += cornerNormals[i] * weights[i];
            colour += (colours.exist() ? colours.at(triangle, i, point) : kClay) * weights[i];
        }
        hit.colour = isFinite(colour) ? colour : kClay;
        if (normal.length2() > 0.0f)
            hit.normal = normal.normalized();

        // Rays from a coarse but smooth surface start above its facets, so that the facets do not shade themselves
        // (Hanika, "Hacking the shadow terminator", Ray Tracing Gems II, 2021).
        BAS_Vec3f lift(0.0f);
        for (int i = 0; i < 3; ++i)
        {
            const float below = std::min(0.0f, (hit.position - corners[i]) ^ cornerNormals[i]);
            lift -= cornerNormals[i] * (below * weights[i]);
        }
        hit.shadowOrigin = hit.position + lift;
    }

private:
    // A unit normal on the side of the facet that the viewer sees; the facet's own where the attribute has none.
    BAS_Vec3f normalAt(int64_t triangle, int corner, int64_t point, const BAS_Vec3f &facet) const
    {
        if (!normals.exist())
            return facet;
        BAS_Vec3f normal = normals.at(triangle, corner, point);
        if (placed)
            normalMatrix.multDirMatrix(BAS_Vec3f(normal), normal);
        if (!isFinite(normal) || normal.length2() <= 0.0f)
            return facet;
        normal.normalize();
        return (normal ^ facet) < 0.0f ? -normal : normal;
    }
};

offline::Scene::Scene() : embree_(new Embree) {}
offline::Scene::~Scene() = default;

void offline::Scene::add(const RQ_PrimitiveHandle &primitive)
{
    if (!primitive)
        return;
    if (const auto *mesh = dynamic_cast<const RQ_PrimPolygonMesh *>(primitive.get()))
        return addMesh(*mesh);
    if (primitive->getPrimitiveType() == RQ_PRIM_POINT_MESH)
        return addPoints(*primitive);
    RQ_RefineList list;
    if (!list.refine(primitive.get(), nullptr))
        ++notDrawn_;
    for (int i = 0; i < list.entries(); ++i)
        add(list.getPrimitive(i));
}

void offline::Scene::addMesh(const RQ_PrimPolygonMesh &mesh)
{
    RQ_PolygonMeshHandle drawn = mesh.convex(3);
    if (!drawn || drawn->getFaceCount() == 0)
        return;
    bool changed = false;
    drawn = drawn->createVertexNormalsIfMissing("P", kCuspAngle, true, changed);

    auto object = std::make_unique<Object>();
    object->primitive = drawn;
    object->points = placedPoints(*drawn);
    object->triangles = rq::Values<int32_t>(drawn->getVertexList());
    object->normals = CornerValues::find(*drawn, "N");
    object->colours = CornerValues::find(*drawn, "Cd");
    object->placed = !drawn->getPrimitiveTransform()->isIdentity();
    if (object->placed)
    {
        drawn->getPrimitiveTransform()->getInverse(object->normalMatrix, 0);
        object->normalMatrix.transpose();
    }

    RTCGeometry geometry = rtcNewGeometry(embree_->device, RTC_GEOMETRY_TYPE_TRIANGLE);
    auto *points = static_cast<BAS_Vec3f *>(rtcSetNewGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3,
                                                                    sizeof(BAS_Vec3f), object->points.size()));
    auto *corners = static_cast<uint32_t *>(rtcSetNewGeometryBuffer(geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3,
                                                                    3 * sizeof(uint32_t), size_t(drawn->getFaceCount())));
    std::copy(object->points.begin(), object->points.end(), points);
    std::copy(object->triangles.begin(), object->triangles.end(), corners);
    for (const int32_t point : object->triangles)
        if (isFinite(object->points[size_t(point)]))
            bounds_.enlarge(object->points[size_t(point)]);
    triangles_ += drawn->getFaceCount();
    rtcCommitGeometry(geometry);
    rtcAttachGeometryByID(embree_->scene, geometry, uint32_t(objects_.size()));
    rtcReleaseGeometry(geometry);
    objects_.push_back(std::move(object));
}

void offline::Scene::addPoints(const RQ_Primitive &cloud)
{
    auto object = std::make_unique<Object>();
    object->primitive = const_cast<RQ_Primitive *>(&cloud);
    object->points = placedPoints(cloud);
    object->colours = CornerValues::find(cloud, "Cd");
    if (object->points.empty())
        return;
    BAS_BoundingBox box;
    for (const BAS_Vec3f &point : object->points)
        if (isFinite(point))
            box.enlarge(point);
    bounds_.enlarge(box);

    // A cloud without widths gets spheres that let its shape be seen.
    RQ_Owner owner;
    const rq::Values<float> widths(cloud.findAttribute("width", owner, 0));
    const float radius = 0.004f * std::max(box.isEmpty() ? 0.0f : box.size().length(), 1e-3f);
    RTCGeometry geometry = rtcNewGeometry(embree_->device, RTC_GEOMETRY_TYPE_SPHERE_POINT);
    auto *spheres = static_cast<float *>(rtcSetNewGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT4,
                                                                 4 * sizeof(float), object->points.size()));
    for (size_t i = 0; i < object->points.size(); ++i)
    {
        for (int axis = 0; axis < 3; ++axis)
            spheres[4 * i + size_t(axis)] = object->points[i][axis];
        spheres[4 * i + 3] = widths.entries() == int64_t(object->points.size()) ? 0.5f * widths(int64_t(i), 0) : radius;
    }
    rtcCommitGeometry(geometry);
    rtcAttachGeometryByID(embree_->scene, geometry, uint32_t(objects_.size()));
    rtcReleaseGeometry(geometry);
    objects_.push_back(std::move(object));
}

void offline::Scene::commit() { rtcCommitScene(embree_->scene); }

bool offline::Scene::intersect(const BAS_Vec3f &origin, const BAS_Vec3f &direction, Hit &hit) const
{
    RTCRayHit ray = {};
    ray.ray = {origin.x, origin.y, origin.z, 0.0f, direction.x, direction.y, direction.z, 0.0f,
               std::numeric_limits<float>::infinity(), 0xFFFFFFFFu, 0, 0};
    ray.hit.geomID = RTC_INVALID_GEOMETRY_ID;
    RTCIntersectContext context;
    rtcInitIntersectContext(&context);
    rtcIntersect1(embree_->scene, &context, &ray);
    if (ray.hit.geomID == RTC_INVALID_GEOMETRY_ID)
        return false;

    const Object &object = *objects_[ray.hit.geomID];
    hit.distance = ray.ray.tfar;
    hit.position = origin + direction * ray.ray.tfar;
    hit.facetNormal = BAS_Vec3f(ray.hit.Ng_x, ray.hit.Ng_y, ray.hit.Ng_z).normalized();
    if ((hit.facetNormal ^ direction) > 0.0f)
        hit.facetNormal = -hit.facetNormal;
    hit.normal = hit.facetNormal;
    hit.shadowOrigin = hit.position;
    if (object.triangles.entries() > 0)
        object.shadeTriangle(ray.hit.primID, ray.hit.u, ray.hit.v, hit);
    else
        hit.colour = object.colours.exist() ? object.colours.at(0, 0, ray.hit.primID) : kClay;
    return true;
}

bool offline::Scene::occluded(const BAS_Vec3f &origin, const BAS_Vec3f &direction) const
{
    RTCRay ray = {origin.x, origin.y, origin.z, 0.0f, direction.x, direction.y, direction.z, 0.0f,
                  std::numeric_limits<float>::infinity(), 0xFFFFFFFFu, 0, 0};
    RTCIntersectContext context;
    rtcInitIntersectContext(&context);
    rtcOccluded1(embree_->scene, &context, &ray);
    return ray.tfar < 0.0f;
}

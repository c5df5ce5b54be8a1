#include <apps/offline/QuadricDrawable.h>

#include <numbers>

#include <embree3/rtcore.h>

#include <host/bas/Parallel.h>
#include <rq/prim/PrimitiveType.h>
#include <rq/surface/PrimTubeMesh.h>

namespace rq::offline
{
namespace
{
// Two matrices of a quadric cost some 200 ns.
constexpr int64_t kQuadricsPerTask = 512;

UnitShape shapeOf(const RQ_PrimQuadricMesh &mesh)
{
    if (const auto *tubes = dynamic_cast<const RQ_PrimTubeMesh *>(&mesh))
        return {UnitShape::Tube, tubes->getTaper(), tubes->getCaps()};
    return {mesh.getPrimitiveType() == RQ_PRIM_CIRCLE_MESH ? UnitShape::Disc : UnitShape::Sphere};
}

template <class Rows> BAS_Vec3d turned(const Rows &rows, const BAS_Vec3d &v)
{
    return BAS_Vec3d(rows[0]) * v.x + BAS_Vec3d(rows[1]) * v.y + BAS_Vec3d(rows[2]) * v.z;
}

/// A circle around the z axis.
struct Ring
{
    double height, radius;
};

std::vector<Ring> ringsOf(const UnitShape &shape)
{
    if (shape.kind == UnitShape::Tube)
        return {{-0.5, shape.radiusAt(-0.5)}, {0.5, shape.radiusAt(0.5)}};
    if (shape.kind == UnitShape::Disc)
        return {{0.0, 1.0}};
    const double r = std::numbers::sqrt2 / 2.0;
    return {{-1.0, 0.0}, {-r, r}, {0.0, 1.0}, {r, r}, {1.0, 0.0}};
}

Line rayOf(const RTCRay &ray)
{
    return {BAS_Vec3d(ray.org_x, ray.org_y, ray.org_z), BAS_Vec3d(ray.dir_x, ray.dir_y, ray.dir_z)};
}

// What the search structure calls.  Rays come one by one.

void boundsOf(const RTCBoundsFunctionArguments *call)
{
    const BAS_BoundingBox box =
        static_cast<const QuadricDrawable *>(call->geometryUserPtr)->bounds(call->primID, int(call->timeStep));
    const BAS_Vec3f low = box.minimum(), high = box.maximum();
    *call->bounds_o = {low.x, low.y, low.z, 0.0f, high.x, high.y, high.z, 0.0f};
}

void intersect(const RTCIntersectFunctionNArguments *call)
{
    auto &[ray, hit] = *reinterpret_cast<RTCRayHit *>(call->rayhit);
    Crossing first;
    if (!call->valid[0] || !static_cast<const QuadricDrawable *>(call->geometryUserPtr)
                                ->cross(call->primID, rayOf(ray), ray.time, ray.tnear, ray.tfar, first))
        return;
    const BAS_Vec3f normal(first.normal.normalized());
    ray.tfar = float(first.distance);
    hit = {normal.x, normal.y, normal.z, 0.0f, 0.0f, call->primID, call->geomID, {call->context->instID[0]}};
}

void occlude(const RTCOccludedFunctionNArguments *call)
{
    RTCRay &ray = *reinterpret_cast<RTCRay *>(call->ray);
    Crossing first;
    if (call->valid[0] && static_cast<const QuadricDrawable *>(call->geometryUserPtr)
                              ->cross(call->primID, rayOf(ray), ray.time, ray.tnear, ray.tfar, first))
        ray.tfar = -std::numeric_limits<float>::infinity();
}
}  // namespace

QuadricDrawable::QuadricDrawable(const BAS_IntrusivePtr<RQ_PrimQuadricMesh> &mesh, const Placing &placing)
    : Drawable(mesh, placing), shape_(shapeOf(*mesh)), count_(mesh->getQuadricCount()),
      steps_(std::max(int(matrices().size()), mesh->getTransforms()->getMotionSegments())),
      quadrics_(size_t(count_) * size_t(steps_))
{
    host::parallelFor(count_ * steps_, kQuadricsPerTask, [&](int64_t i) {
        BAS_Mat4d own;
        const size_t step = size_t(i % steps_);
        mesh->getTransforms()->getMatrix(own, i / steps_, int(step));
        quadrics_[size_t(i)] = placed(own * matrices()[std::min(step, matrices().size() - 1)]);
    });
}

QuadricDrawable::Quadric QuadricDrawable::placed(BAS_Mat4d matrix) const
{
    const auto row = [&](int i) { return BAS_Vec3d(matrix[i][0], matrix[i][1], matrix[i][2]); };
    if (shape_.kind == UnitShape::Disc)
    {
        // A disc has no height that a matrix could take away from it.
        const BAS_Vec3d up = row(0) % row(1);
        const double length = std::sqrt(up.length());
        for (int i = 0; i < 3; ++i)
            matrix[2][i] = length > 0.0 ? up[i] / length : 0.0;
    }
    const double volume = row(0) % row(1) ^ row(2);
    Quadric quadric;
    quadric.flat = volume == 0.0 || !std::isfinite(volume);
    const BAS_Mat4d back = quadric.flat ? BAS_Mat4d() : matrix.inverse();
    for (int i = 0; i < 4; ++i)
    {
        quadric.out[size_t(i)] = BAS_Vec3f(row(i));
        quadric.in[size_t(i)] = BAS_Vec3f(float(back[i][0]), float(back[i][1]), float(back[i][2]));
    }
    return quadric;
}

RTCGeometryTy *QuadricDrawable::makeGeometry(RTCDeviceTy *device) const
{
    const RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_USER);
    rtcSetGeometryUserPrimitiveCount(geometry, unsigned(count_));
    rtcSetGeometryTimeStepCount(geometry, unsigned(steps_));
    rtcSetGeometryUserData(geometry, const_cast<QuadricDrawable *>(this));
    rtcSetGeometryBoundsFunction(geometry, boundsOf, nullptr);
    rtcSetGeometryIntersectFunction(geometry, intersect);
    rtcSetGeometryOccludedFunction(geometry, occlude);
    return geometry;
}

// Its matrix is mixed, and its way back made of that.
QuadricDrawable::Quadric QuadricDrawable::atTime(int64_t index, float time) const
{
    const Moment moment(time, steps_);
    const Quadric &before = at(index, moment.step);
    if (!(moment.part > 0.0f))
        return before;
    const Quadric &behind = at(index, moment.step + 1);
    BAS_Mat4d matrix;
    for (int i = 0; i < 4; ++i)
    {
        const BAS_Vec3f &from = before.out[size_t(i)];
        const BAS_Vec3f row = from + (behind.out[size_t(i)] - from) * moment.part;
        std::copy_n(row.getValue(), 3, matrix[i]);
    }
    return placed(matrix);
}

BAS_BoundingBox QuadricDrawable::bounds(int64_t index, int step) const
{
    BAS_BoundingBox box;
    const Quadric &quadric = at(index, step);
    if (quadric.flat)
        return box;
    const Rows &rows = quadric.out;
    const auto enlarge = [&](const BAS_Vec3f &centre, float around, float along) {
        BAS_Vec3f half;
        for (int i = 0; i < 3; ++i)
            half[i] = std::hypot(around * rows[0][i], around * rows[1][i], along * rows[2][i]);
        box.enlarge(centre - half);
        box.enlarge(centre + half);
    };
    if (shape_.kind == UnitShape::Sphere)
        enlarge(rows[3], 1.0f, 1.0f);
    else
        for (const Ring &ring : ringsOf(shape_))
            enlarge(rows[3] + rows[2] * float(ring.height), float(ring.radius), 0.0f);
    return box;
}

bool QuadricDrawable::cross(int64_t index, const Line &ray, float time, double least, double most, Crossing &first) const
{
    const Rows in = steps_ == 1 ? at(index, 0).in : atTime(index, time).in;
    if (!shape_.cross({turned(in, ray.origin) + BAS_Vec3d(in[3]), turned(in, ray.direction)}, least, most, first))
        return false;
    // Normals go the way of planes: by the transposed way back.
    const BAS_Vec3d normal = first.normal;
    for (int i = 0; i < 3; ++i)
        first.normal[i] = in[size_t(i)][0] * normal.x + in[size_t(i)][1] * normal.y + in[size_t(i)][2] * normal.z;
    return true;
}

void QuadricDrawable::addTo(Outline &outline) const
{
    constexpr int kCorners = 8;
    const std::vector<Ring> rings = ringsOf(shape_);
    const int64_t count = int64_t(quadrics_.size());
    const int64_t stride = Outline::stride(count * kCorners * int64_t(rings.size()));
    for (int64_t i = 0; i < count; ++i)
    {
        const BAS_BoundingBox box = bounds(i / steps_, int(i % steps_));
        if (box.isEmpty())
            continue;
        outline.add(box.minimum(), 0.0f, false);
        for (int corner = 0; i % stride == 0 && corner < kCorners * int(rings.size()); ++corner)
        {
            const Ring &ring = rings[size_t(corner / kCorners)];
            const double turn = 2.0 * std::numbers::pi * corner / kCorners;
            const BAS_Vec3d point(ring.radius * std::cos(turn), ring.radius * std::sin(turn), ring.height);
            const Rows &out = quadrics_[size_t(i)].out;
            outline.add(BAS_Vec3f(turned(out, point)) + out[3], 0.0f, true);
        }
    }
}

Place QuadricDrawable::locate(int64_t quadric, float, float, Hit &) const { return {{{.vertex = quadric}}}; }
}  // namespace rq::offline

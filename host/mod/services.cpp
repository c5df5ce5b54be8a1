#include <host/mod/services.h>

#include <cmath>

#include <host/bas/Parallel.h>
#include <host/elm/PrimitiveFactory.h>
#include <host/mod/PrimPacked.h>
#include <host/msh/Meta.h>
#include <host/msh/Quadric.h>

namespace
{
// A point costs about a nanosecond, a placed primitive some fifty.
constexpr int64_t kPointsPerTask = 32768;
constexpr int64_t kPrimitivesPerTask = 1024;

template <class Body> BAS_BoundingBox boxOfAll(int64_t count, int64_t block, Body &&body)
{
    return host::parallelReduce(
        count, block, BAS_BoundingBox(),
        [&body](int64_t begin, int64_t end) {
            BAS_BoundingBox box;
            for (int64_t i = begin; i < end; ++i)
                body(box, i);
            return box;
        },
        [](BAS_BoundingBox &into, const BAS_BoundingBox &from) { into.enlarge(from); });
}

void enlarge(BAS_BoundingBox &box, const BAS_Vec3d &point)
{
    box.enlarge(BAS_Vec3f(float(point.x), float(point.y), float(point.z)));
}

void enlargeByBox(BAS_BoundingBox &box, const BAS_Vec3d &low, const BAS_Vec3d &high, const BAS_Mat4d &placement)
{
    for (int corner = 0; corner < 8; ++corner)
        enlarge(box,
                host::transformPoint({corner & 1 ? high.x : low.x, corner & 2 ? high.y : low.y, corner & 4 ? high.z : low.z},
                                     placement));
}

void enlargeByBall(BAS_BoundingBox &box, const BAS_Mat4d &placement, bool isDisc)
{
    BAS_Vec3d reach, centre;
    for (int axis = 0; axis < 3; ++axis)
    {
        const double x = placement[0][axis], y = placement[1][axis], z = isDisc ? 0.0 : placement[2][axis];
        reach[axis] = std::sqrt(x * x + y * y + z * z);
        centre[axis] = placement[3][axis];
    }
    enlarge(box, centre - reach);
    enlarge(box, centre + reach);
}

void enlargeByPlaced(BAS_BoundingBox &box, const MSH_Placed &placed)
{
    BAS_Vec3d reach(1.0);
    switch (placed.type())
    {
    case ELM_PRIMITIVE_CIRCLE:
    case ELM_PRIMITIVE_SPHERE:
    case ELM_PRIMITIVE_BLOB_ELLIPSOID:
        return enlargeByBall(box, placed.placement(), placed.type() == ELM_PRIMITIVE_CIRCLE);
    case ELM_PRIMITIVE_TUBE:
        reach.x = reach.y = std::max(1.0, std::abs(MSH_Quadric(placed).taper()));
        reach.z = 0.5;
        break;
    case ELM_PRIMITIVE_BLOB_CAPSULE:
        reach.z = 1.0 + 0.5 * MSH_Meta(placed).blob().length;
        break;
    case ELM_PRIMITIVE_BLOB_QUADRIC:
    case ELM_PRIMITIVE_BLOB_BOX:
    case ELM_PRIMITIVE_VOLUME:
        break;
    default:
        // What a sparse volume reaches is known to its library; expressions reach as far as their blobs.
        if (const MOD_PrimPacked packed(placed); packed.isValid())
            if (const BAS_BoundingBox inner = packed.bounds(); !inner.isEmpty())
                enlargeByBox(box, BAS_Vec3d(inner.minimum()), BAS_Vec3d(inner.maximum()), packed.fullTransform());
        return;
    }
    enlargeByBox(box, -reach, reach, placed.placement());
}

bool hasPlaced(const MSH_Detail &detail)
{
    return detail.find(ELM_OWNER_PRIMITIVE, ELM_SCOPE_PRIVATE, ELM_TRANSFORM_NAME) != nullptr;
}
}  // namespace

BAS_BoundingBox MODcomputeBounds(const MSH_Detail &detail)
{
    const ELM_Range points = detail.range(ELM_OWNER_POINT);
    BAS_BoundingBox box = detail.positions().numericTuple()->visit([&](const auto &pages) {
        return boxOfAll(detail.capacity(ELM_OWNER_POINT), kPointsPerTask,
                        [reader = pages.reader(), &points](BAS_BoundingBox &part, int64_t point) {
                            if (!points.contains(point))
                                return;
                            const auto *p = reader.tuple(point);
                            part.enlarge(BAS_Vec3f(float(p[0]), float(p[1]), float(p[2])));
                        });
    });
    if (hasPlaced(detail))
        box.enlarge(boxOfAll(
            detail.capacity(ELM_OWNER_PRIMITIVE), kPrimitivesPerTask,
            [&detail](BAS_BoundingBox &part, int64_t primitive) { enlargeByPlaced(part, MSH_Placed(detail, primitive)); }));
    return box;
}

ELM_OffsetList MODunusedPoints(const MSH_Detail &detail)
{
    ELM_OffsetList unused;
    for (const auto [begin, end] : detail.range(ELM_OWNER_POINT).blocks())
        for (ELM_Offset point = begin; point < end; ++point)
            if (!detail.usedPoints().get(point))
                unused.append(point);
    return unused;
}

MOD_ConstDetailHandle MODpointsOf(const MSH_Detail &detail)
{
    MSH_DetailData points = detail.data();
    for (const ELM_Owner owner : {ELM_OWNER_VERTEX, ELM_OWNER_PRIMITIVE})
    {
        points.attributes[owner] = ELM_AttributeDict();
        points.groups[owner] = ELM_GroupDict();
        points.capacity[owner] = points.vacant[owner] = 0;
        points.live[owner] = nullptr;
    }
    points.vertexPoint.resize(0);
    points.eachPrimitiveColumn([](auto &column) { column.resize(0); });
    points.payloads = MSH_PayloadTable();
    points.typeCounts.clear();
    points.looseVertices = 0;
    points.sequentialVertices = true;
    points.topologyId = ELM_Attribute::nextDataId();
    return MOD_ConstDetailHandle(new MSH_Detail(points));
}

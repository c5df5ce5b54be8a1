#include <apps/offline/placement.h>

#include <cmath>
#include <vector>

#include <apps/offline/Outline.h>
#include <host/bas/Parallel.h>
#include <rq/data/Positions.h>

namespace rq::offline
{
BAS_BoundingBox finiteBounds(const RQ_Primitive &primitive)
{
    std::vector<BAS_BoundingBox> segments(size_t(std::max(1, primitive.getMotionSegments())));
    primitive.enlargeBounds(segments.data(), int(segments.size()));
    BAS_BoundingBox whole;
    for (const BAS_BoundingBox &segment : segments)
        whole.enlarge(segment);
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

BAS_Mat4d unitPlacement(const BAS_BoundingBox &box)
{
    if (box.isEmpty())
        return BAS_Mat4d();
    const BAS_Vec3d low(box.minimum()), high(box.maximum());
    const double radius = 0.5 * (high - low).length();
    BAS_Mat4d place, scale;
    place.setTranslation((low + high) * -0.5);
    scale.setScale(radius > 0.0 ? 1.0 / radius : 1.0);
    return place * scale;
}

bool isWellPlaced(const BAS_BoundingBox &box)
{
    constexpr double kSmall = 1e-4, kLarge = 1e4, kAway = 4.0;
    if (box.isEmpty())
        return true;
    const BAS_Vec3d low(box.minimum()), high(box.maximum());
    const double radius = 0.5 * (high - low).length();
    return radius > kSmall && radius < kLarge && (0.5 * (low + high)).length() < kAway * radius;
}
}  // namespace rq::offline

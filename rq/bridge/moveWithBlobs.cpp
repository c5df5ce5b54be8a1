#include <rq/bridge/detail/moveWithBlobs.h>

#include <algorithm>
#include <cmath>

#include <rq/bridge/detail/blobShares.h>
#include <rq/data/DANumeric.h>

namespace
{
/// From where a blob is in the first segment to where it is in another.
std::vector<BAS_Mat4d> waysOf(const RQ_TransformArray &placements, int segment)
{
    std::vector<BAS_Mat4d> ways(size_t(placements.entries()));
    for (int64_t blob = 0; blob < placements.entries(); ++blob)
    {
        BAS_Mat4d from, to;
        placements.getMatrix(from, blob, 0);
        placements.getMatrix(to, blob, segment);
        ways[size_t(blob)] = from.inverse() * to;
    }
    return ways;
}
}  // namespace

std::vector<RQ_DataArrayHandle> rq::moveWithBlobs(const BlobField &field, const IsoSurface &surface,
                                                  const RQ_TransformArray &placements)
{
    std::vector<RQ_DataArrayHandle> segments{surface.mesh->getShared()->get("P")};
    for (int segment = 1; segment < placements.getMotionSegments(); ++segment)
    {
        const std::vector<BAS_Mat4d> ways = waysOf(placements, segment);
        const BAS_IntrusivePtr<RQ_DANumeric<float>> moved(
            new RQ_DANumeric<float>(surface.pointEnds.back(), 3, RQ_TYPE_POINT));
        visitShares(field, surface, [&](int64_t point, const BAS_Vec3d &at, const BlobShares &shares) {
            BAS_Vec3d way(0.0);
            for (const auto &[blob, share] : shares)
                way += (host::transformPoint(at, ways[size_t(blob)]) - at) * share;
            const BAS_Vec3f place(std::isfinite(way.length2()) ? at + way : at);
            std::copy_n(&place.x, 3, moved->data() + 3 * point);
        });
        segments.push_back(moved);
    }
    return segments;
}

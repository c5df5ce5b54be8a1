#include <rq/bridge/detail/packedPlacements.h>

#include <host/mod/PrimPacked.h>
#include <rq/bridge/detail/PlacedPrimitives.h>
#include <rq/prim/CompactTransformArray.h>

namespace
{
BAS_Mat4d toPivot(const RQ_MSHDetailList &details, ELM_Offset primitive)
{
    BAS_Mat4d matrix;
    return matrix.setTranslation(-MOD_PrimPacked(*details.getDetail(), primitive).pivot());
}

bool hasPivot(const RQ_MSHDetailList &details, const RQ_MSHOffsetList &primitives)
{
    for (int64_t i = 0; i < primitives.entries(); ++i)
        if (MOD_PrimPacked(*details.getDetail(), primitives[i]).pivot() != BAS_Vec3d(0.0))
            return true;
    return false;
}
}  // namespace

BAS_Mat4d rq::packedPlacement(const RQ_MSHDetailList &details, ELM_Offset primitive, int segment)
{
    if (!details.movesPoints())
        return MOD_PrimPacked(*details.getDetail(segment), primitive).fullTransform();
    BAS_Mat4d matrix;
    placementsOf(details, RQ_MSHOffsetList(ELM_OffsetList(primitive, 1)))->getMatrix(matrix, 0, segment);
    return toPivot(details, primitive) * matrix;
}

RQ_TransformArrayHandle rq::packedPlacementsOf(const RQ_MSHDetailList &details, const RQ_MSHOffsetList &primitives)
{
    const RQ_TransformArrayHandle placements = placementsOf(details, primitives);
    if (!hasPivot(details, primitives))
        return placements;
    const auto read = [&](int64_t first, int64_t count, int segment, BAS_Mat4d *out) {
        for (int64_t i = 0; i < count; ++i)
        {
            placements->getMatrix(out[i], first + i, segment);
            out[i] = toPivot(details, primitives[first + i]) * out[i];
        }
    };
    const BAS_IntrusivePtr<RQ_CompactTransformArray> all(new RQ_CompactTransformArray);
    all->setAffine(primitives.entries(), details.getSegments(), read);
    return all;
}

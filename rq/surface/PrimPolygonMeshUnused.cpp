#include <rq/surface/PrimPolygonMesh.h>

#include <limits>

#include <rq/data/DANumeric.h>
#include <rq/surface/detail/SharedTopology.h>
#include <rq/surface/detail/keptPoints.h>

namespace
{
using rq::UsedPoints;

bool fits32(int64_t rows, RQ_IndexingMode mode)
{
    return mode == RQ_INDEXING_32 || (mode == RQ_INDEXING_AUTO && rows <= std::numeric_limits<int32_t>::max());
}

/// A vertex list, or one without corners in place of none.
RQ_DataArrayHandle orEmpty(const RQ_DataArrayHandle &list)
{
    return list ? list : RQ_DataArrayHandle(new RQ_DANumeric<int32_t>(0, 1, RQ_TYPE_NONE));
}

template <class T> RQ_DataArrayHandle remap(const UsedPoints &used)
{
    auto *rows = new RQ_DANumeric<T>(used.points(), 1, RQ_TYPE_NONE);
    used.copyPlacesTo(rows->data());
    return rows;
}
}  // namespace

RQ_DataArrayHandle RQ_PrimPolygonMesh::getUsedPointList(RQ_IndexingMode mode) const
{
    const RQ_DataArrayHandle list = orEmpty(vertexList_);
    // Without attributes of points the list alone tells how many there are.
    int64_t least = 0, greatest = getPointCount() - 1;
    if (greatest < 0 && list->entries() > 0)
        list->getRange(least, greatest);
    return rq::usedRows(UsedPoints(*list, greatest + 1), fits32(greatest + 1, mode));
}

RQ_PolygonMeshHandle RQ_PrimPolygonMesh::removeUnusedPoints(RQ_DataArrayHandle *indexRemap) const
{
    const int64_t points = getPointCount();
    if (points == 0 && indexRemap)
        *indexRemap = orEmpty(nullptr);
    if (points == 0 || (!indexRemap && topology_->usesAll(points)))
        return const_cast<RQ_PrimPolygonMesh *>(this);
    const RQ_DataArrayHandle list = orEmpty(vertexList_);
    const UsedPoints used(*list, points);
    if (indexRemap)
        *indexRemap = rq::fitNarrow(used, *list) ? remap<int32_t>(used) : remap<int64_t>(used);
    if (used.count() == points)
    {
        topology_->noteUsesAll(points);
        return const_cast<RQ_PrimPolygonMesh *>(this);
    }

    const rq::KeptPoints kept = rq::keepUsedPoints(used, list, shared_);
    const RQ_PolygonMeshHandle mesh = clone(kept.vertexList, kept.shared, vertex_, uniform_, detail_);
    mesh->topology_->noteUsesAll(used.count());
    mesh->followElements(nullptr, kept.points);
    return mesh;
}

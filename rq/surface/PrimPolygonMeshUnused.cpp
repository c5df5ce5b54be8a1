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

template <class T> RQ_DataArrayHandle remap(const UsedPoints &used)
{
    auto *rows = new RQ_DANumeric<T>(used.points(), 1, RQ_TYPE_NONE);
    used.copyPlacesTo(rows->data());
    return rows;
}
}  // namespace

RQ_DataArrayHandle RQ_PrimPolygonMesh::getUsedPointList(RQ_IndexingMode mode) const
{
    if (!vertexList_)
        return fits32(0, mode) ? RQ_DataArrayHandle(new RQ_DANumeric<int32_t>(0, 1, RQ_TYPE_NONE))
                               : RQ_DataArrayHandle(new RQ_DANumeric<int64_t>(0, 1, RQ_TYPE_NONE));
    const UsedPoints used(*vertexList_, getPointCount());
    return rq::usedRows(used, fits32(getPointCount(), mode));
}

RQ_PolygonMeshHandle RQ_PrimPolygonMesh::removeUnusedPoints(RQ_DataArrayHandle *indexRemap) const
{
    const int64_t points = getPointCount();
    if (!shared_ || !vertexList_ || (!indexRemap && topology_->usesAll(points)))
        return const_cast<RQ_PrimPolygonMesh *>(this);
    const UsedPoints used(*vertexList_, points);
    if (indexRemap)
        *indexRemap = rq::fitNarrow(used, *vertexList_) ? remap<int32_t>(used) : remap<int64_t>(used);
    if (used.count() == points)
    {
        topology_->noteUsesAll(points);
        return const_cast<RQ_PrimPolygonMesh *>(this);
    }

    const rq::KeptPoints kept = rq::keepUsedPoints(used, vertexList_, shared_);
    const RQ_PolygonMeshHandle mesh = clone(kept.vertexList, kept.shared, vertex_, uniform_, detail_);
    mesh->topology_->noteUsesAll(used.count());
    mesh->followElements(nullptr, kept.points);
    return mesh;
}

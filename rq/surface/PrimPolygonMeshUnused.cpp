#include <rq/surface/PrimPolygonMesh.h>

#include <algorithm>
#include <limits>

#include <rq/data/DANumeric.h>
#include <rq/data/DARange.h>
#include <rq/data/Values.h>
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

/// The rows that a vertex list names, where nothing tells how many there are.
RQ_DataArrayHandle namedRows(const RQ_DataArray &list, RQ_IndexingMode mode)
{
    const rq::Values<int64_t> values(list);
    std::vector<int64_t> rows;
    std::copy_if(values.begin(), values.end(), std::back_inserter(rows), [](int64_t row) { return row >= 0; });
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    const bool areNarrow = rows.empty() || rows.back() < std::numeric_limits<int32_t>::max();
    if (mode == RQ_INDEXING_64 || !areNarrow)
        return new RQ_DANumeric<int64_t>(rows.data(), int64_t(rows.size()));
    const std::vector<int32_t> narrow(rows.begin(), rows.end());
    return new RQ_DANumeric<int32_t>(narrow.data(), int64_t(narrow.size()));
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
    const int64_t points = getPointCount();
    return points > 0 ? rq::usedRows(UsedPoints(*list, points), fits32(points, mode)) : namedRows(*list, mode);
}

RQ_PolygonMeshHandle RQ_PrimPolygonMesh::removeUnusedPoints(RQ_DataArrayHandle *indexRemap) const
{
    const int64_t points = getPointCount();
    if (!indexRemap && topology_->usesAll(points))
        return const_cast<RQ_PrimPolygonMesh *>(this);
    // Corners that no list names may be at any point.
    if (points == 0 || (!vertexList_ && getVertexCount() > 0))
    {
        if (indexRemap)
            *indexRemap = new RQ_DARange(points);
        return const_cast<RQ_PrimPolygonMesh *>(this);
    }
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

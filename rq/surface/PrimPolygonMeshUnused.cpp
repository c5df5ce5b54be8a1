#include <rq/surface/PrimPolygonMesh.h>

#include <algorithm>
#include <limits>

#include <host/bas/Parallel.h>
#include <host/bas/stream.h>
#include <rq/data/DANumeric.h>
#include <rq/data/DARange.h>
#include <rq/data/mixId.h>
#include <rq/surface/detail/PointPlaces.h>
#include <rq/surface/detail/SharedTopology.h>
#include <rq/surface/detail/UsedPoints.h>

namespace
{
using rq::UsedPoints;

bool fits32(int64_t rows, RQ_IndexingMode mode)
{
    return mode == RQ_INDEXING_32 || (mode == RQ_INDEXING_AUTO && rows <= std::numeric_limits<int32_t>::max());
}

template <class T> RQ_DataArrayHandle usedRows(const UsedPoints &used)
{
    auto *rows = new RQ_DANumeric<T>(used.count(), 1, RQ_TYPE_NONE);
    used.copyTo(rows->data());
    return rows;
}

template <class T> RQ_DataArrayHandle remap(const UsedPoints &used)
{
    auto *rows = new RQ_DANumeric<T>(used.points(), 1, RQ_TYPE_NONE);
    used.copyPlacesTo(rows->data());
    return rows;
}

/// The corners with other points: `change(to, points, count)` writes those of some corners.
template <class T, class Change> RQ_DataArrayHandle changed(const RQ_DataArray &vertexList, const Change &change)
{
    RQ_DataArrayHandle buffer;
    const T *points = vertexList.getArray<T>(buffer);
    const int64_t corners = vertexList.entries();
    auto *list = new RQ_DANumeric<T>(corners, 1, RQ_TYPE_NONE);
    const bool streamed = corners * int64_t(sizeof(T)) >= host::kStreamedBytes;
    host::parallelForRange(corners, UsedPoints::kItemsPerTask, [&, values = list->data()](int64_t begin, int64_t end) {
        host::writeBlocks(values + begin, end - begin, streamed,
                          [&](T *to, int64_t first, int64_t count) { change(to, points + begin + first, count); });
    });
    return list;
}

template <class T> RQ_DataArrayHandle renumber(const RQ_DataArray &vertexList, const UsedPoints &used)
{
    if (used.isRun())
        return changed<T>(vertexList, [before = T(used.first())](T *to, const T *points, int64_t count) {
            std::transform(points, points + count, to, [before](T point) { return point - before; });
        });
    const rq::PointPlaces places(used);
    return changed<T>(vertexList, [&](T *to, const T *points, int64_t count) { places.copyTo(to, points, count); });
}
}  // namespace

RQ_DataArrayHandle RQ_PrimPolygonMesh::getUsedPointList(RQ_IndexingMode mode) const
{
    if (!vertexList_)
        return fits32(0, mode) ? RQ_DataArrayHandle(new RQ_DANumeric<int32_t>(0, 1, RQ_TYPE_NONE))
                               : RQ_DataArrayHandle(new RQ_DANumeric<int64_t>(0, 1, RQ_TYPE_NONE));
    const UsedPoints used(*vertexList_, getPointCount());
    return fits32(getPointCount(), mode) ? usedRows<int32_t>(used) : usedRows<int64_t>(used);
}

RQ_PolygonMeshHandle RQ_PrimPolygonMesh::removeUnusedPoints(RQ_DataArrayHandle *indexRemap) const
{
    const int64_t points = getPointCount();
    if (!shared_ || !vertexList_ || (!indexRemap && topology_->usesAll(points)))
        return const_cast<RQ_PrimPolygonMesh *>(this);
    const UsedPoints used(*vertexList_, points);
    const bool narrow = fits32(points, RQ_INDEXING_AUTO) && vertexList_->getStorage() != RQ_STORAGE_INT64;
    if (indexRemap)
        *indexRemap = narrow ? remap<int32_t>(used) : remap<int64_t>(used);
    if (used.count() == points)
    {
        topology_->noteUsesAll(points);
        return const_cast<RQ_PrimPolygonMesh *>(this);
    }

    // What is kept follows from the vertex list alone: meshes made again from the same list get the same ids.
    const uint64_t origin = RQmixId(uint64_t(vertexList_->getDataId())) + RQmixId(uint64_t(points));
    const bool isRun = used.isRun();
    RQ_DataArrayHandle kept, list = vertexList_;
    if (isRun)
        kept = new RQ_DARange(used.first(), used.first() + used.count(), 1);
    else
        kept = narrow ? usedRows<int32_t>(used) : usedRows<int64_t>(used);
    kept->setDataId(rq::validId(RQmixId(origin)));  // before the views, whose ids come of it
    if (!isRun || used.first() > 0)
    {
        list = narrow ? renumber<int32_t>(*vertexList_, used) : renumber<int64_t>(*vertexList_, used);
        list->setDataId(rq::validId(RQmixId(origin + 1)));
    }
    const RQ_AttributeListHandle shared =
        isRun ? shared_->createSubArray(used.first(), used.count()) : shared_->createIndirect(kept);
    const RQ_PolygonMeshHandle mesh = clone(list, shared, vertex_, uniform_, detail_);
    mesh->topology_->noteUsesAll(used.count());
    mesh->followElements(nullptr, kept);
    return mesh;
}

#include <rq/surface/detail/keptPoints.h>

#include <limits>

#include <host/bas/stream.h>
#include <rq/data/DANumeric.h>
#include <rq/data/DARange.h>
#include <rq/data/mixId.h>
#include <rq/surface/detail/PointPlaces.h>

namespace
{
using rq::UsedPoints;

template <class T> RQ_DataArrayHandle rowsOf(const UsedPoints &used)
{
    auto *rows = new RQ_DANumeric<T>(used.count(), 1, RQ_TYPE_NONE);
    used.copyTo(rows->data());
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

RQ_DataArrayHandle rq::usedRows(const UsedPoints &used, bool narrow)
{
    return narrow ? rowsOf<int32_t>(used) : rowsOf<int64_t>(used);
}

bool rq::fitNarrow(const UsedPoints &used, const RQ_DataArray &vertexList)
{
    return used.points() <= std::numeric_limits<int32_t>::max() && vertexList.getStorage() != RQ_STORAGE_INT64;
}

rq::KeptPoints rq::keepUsedPoints(const UsedPoints &used, const RQ_DataArrayHandle &vertexList,
                                  const RQ_AttributeListHandle &shared)
{
    // What is kept follows from the vertex list alone: meshes made again from the same list get the same ids, if it has one.
    const auto name = [has = vertexList->getDataId() != -1](RQ_DataArray &array, uint64_t id) {
        array.setDataId(has ? validId(RQmixId(id)) : -1);
    };
    const bool narrow = fitNarrow(used, *vertexList), isRun = used.isRun();
    const uint64_t origin = RQmixId(uint64_t(vertexList->getDataId())) + RQmixId(uint64_t(used.points()));
    KeptPoints kept{nullptr, vertexList, nullptr};
    if (isRun)
        kept.points = new RQ_DARange(used.first(), used.first() + used.count(), 1);
    else
        kept.points = usedRows(used, narrow);
    name(*kept.points, origin);  // before the views, whose ids come of it
    if (!isRun || used.first() > 0)
    {
        kept.vertexList = narrow ? renumber<int32_t>(*vertexList, used) : renumber<int64_t>(*vertexList, used);
        name(*kept.vertexList, origin + 1);
    }
    kept.shared = isRun ? shared->createSubArray(used.first(), used.count()) : shared->createIndirect(kept.points);
    return kept;
}

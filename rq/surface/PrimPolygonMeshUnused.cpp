#include <rq/surface/PrimPolygonMesh.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <limits>
#include <numeric>

#include <host/bas/LargeBlocks.h>
#include <host/bas/Parallel.h>
#include <rq/data/DANumeric.h>
#include <rq/data/DARange.h>
#include <rq/data/mixId.h>
#include <rq/surface/detail/SharedTopology.h>
#include <rq/surface/detail/topology.h>

namespace
{
// Marking and counting cost about half a nanosecond an item.
constexpr int64_t kItemsPerTask = 65536;

/// Which points some face uses, and how many of them lie before each block of points.
class UsedPoints
{
public:
    UsedPoints(const RQ_CountArray &counts, const RQ_DataArray &vertexList, int64_t points)
        : used_(size_t(points)), before_(size_t((points + kItemsPerTask - 1) / kItemsPerTask) + 1, 0)
    {
        host::parallelForRange(points, kItemsPerTask, [this](int64_t begin, int64_t end) {
            std::fill(used_.begin() + begin, used_.begin() + end, 0);
        });
        rq::visitTopology(counts, vertexList, [&](const auto &topology) {
            host::parallelForRange(counts.sumCounts(), kItemsPerTask,
                                   [&](int64_t begin, int64_t end) { mark(used_.data(), topology.points, begin, end); });
        });
        host::parallelFor(int64_t(before_.size()) - 1, 1, [&](int64_t block) {
            // So few items that 32 bits count them: twice as many lanes.
            const int64_t begin = block * kItemsPerTask, end = std::min(points, begin + kItemsPerTask);
            before_[size_t(block) + 1] = std::accumulate(used_.data() + begin, used_.data() + end, uint32_t(0));
        });
        for (size_t block = 1; block < before_.size(); ++block)
            before_[block] += before_[block - 1];
    }

    int64_t count() const { return before_.back(); }

    /// The first used point, of which there must be one.
    int64_t first() const { return std::find(used_.begin(), used_.end(), 1) - used_.begin(); }

    /// True when the used points are all from the first to the last of them.
    bool isRun() const
    {
        const auto last = std::find(used_.rbegin(), used_.rend(), 1);
        return count() > 0 && used_.rend() - last == first() + count();
    }

    /// Call `write(point, row)` for every point: its place among the used ones, or -1.
    template <class Write> void forEach(Write &&write) const
    {
        const int64_t points = int64_t(used_.size());
        host::parallelFor(int64_t(before_.size()) - 1, 1, [&](int64_t block) {
            int64_t row = before_[size_t(block)];
            for (int64_t point = block * kItemsPerTask; point < std::min(points, (block + 1) * kItemsPerTask); ++point)
                write(point, used_[size_t(point)] ? row++ : -1);
        });
    }

private:
    // By pointers of its own: a byte may be part of anything, so nothing else would stay in registers.
    template <class Point> static void mark(uint8_t *used, const Point *points, int64_t begin, int64_t end)
    {
        // Several corners mark one point: all write the same value.
        const auto markOne = [used](uint64_t point) {
            std::atomic_ref<uint8_t>(used[point]).store(1, std::memory_order_relaxed);
        };
        int64_t corner = begin;
        if constexpr (sizeof(Point) == sizeof(uint32_t))
        {
            // Reading takes as long as marking, so two points are read at a time; which comes first does not matter.
            constexpr int64_t kPairs = 4;
            for (; corner + 2 * kPairs <= end; corner += 2 * kPairs)
            {
                uint64_t pairs[kPairs];
                std::memcpy(pairs, points + corner, sizeof(pairs));
                for (const uint64_t pair : pairs)
                {
                    markOne(uint32_t(pair));
                    markOne(pair >> 32);
                }
            }
        }
        for (; corner < end; ++corner)
            markOne(uint64_t(points[corner]));
    }

    std::vector<uint8_t, BAS_BlockAllocator<uint8_t>> used_;
    std::vector<int64_t> before_;
};

bool fits32(int64_t rows, RQ_IndexingMode mode)
{
    return mode == RQ_INDEXING_32 || (mode == RQ_INDEXING_AUTO && rows <= std::numeric_limits<int32_t>::max());
}

template <class T> RQ_DataArrayHandle usedRows(const UsedPoints &used)
{
    auto *rows = new RQ_DANumeric<T>(used.count(), 1, RQ_TYPE_NONE);
    used.forEach([values = rows->data()](int64_t point, int64_t row) {
        if (row >= 0)
            values[row] = T(point);
    });
    return rows;
}

template <class T> RQ_DataArrayHandle remap(const UsedPoints &used, int64_t points)
{
    auto *rows = new RQ_DANumeric<T>(points, 1, RQ_TYPE_NONE);
    used.forEach([values = rows->data()](int64_t point, int64_t row) { values[point] = T(row); });
    return rows;
}

/// The corners by `change(point)` of their points.
template <class T, class Change> RQ_DataArrayHandle changed(const RQ_DataArray &vertexList, Change &&change)
{
    RQ_DataArrayHandle buffer;
    const T *points = vertexList.getArray<T>(buffer);
    auto *list = new RQ_DANumeric<T>(vertexList.entries(), 1, RQ_TYPE_NONE);
    host::parallelFor(vertexList.entries(), kItemsPerTask,
                      [values = list->data(), points, change](int64_t corner) { values[corner] = change(points[corner]); });
    return list;
}

template <class T> RQ_DataArrayHandle shift(const RQ_DataArray &vertexList, int64_t first)
{
    return changed<T>(vertexList, [first](T point) { return T(point - first); });
}

template <class T> RQ_DataArrayHandle renumber(const RQ_DataArray &vertexList, const RQ_DataArrayHandle &rows)
{
    RQ_DataArrayHandle buffer;
    return changed<T>(vertexList, [row = rows->getArray<T>(buffer)](T point) { return row[point]; });
}
}  // namespace

RQ_DataArrayHandle RQ_PrimPolygonMesh::getUsedPointList(RQ_IndexingMode mode) const
{
    if (!vertexList_)
        return fits32(0, mode) ? RQ_DataArrayHandle(new RQ_DANumeric<int32_t>(0, 1, RQ_TYPE_NONE))
                               : RQ_DataArrayHandle(new RQ_DANumeric<int64_t>(0, 1, RQ_TYPE_NONE));
    const UsedPoints used(counts_, *vertexList_, getPointCount());
    return fits32(getPointCount(), mode) ? usedRows<int32_t>(used) : usedRows<int64_t>(used);
}

RQ_PolygonMeshHandle RQ_PrimPolygonMesh::removeUnusedPoints(RQ_DataArrayHandle *indexRemap) const
{
    const int64_t points = getPointCount();
    if (!shared_ || !vertexList_ || (!indexRemap && topology_->usesAll(points)))
        return const_cast<RQ_PrimPolygonMesh *>(this);
    const UsedPoints used(counts_, *vertexList_, points);
    const bool narrow = fits32(points, RQ_INDEXING_AUTO) && vertexList_->getStorage() != RQ_STORAGE_INT64;
    const bool unchanged = used.count() == points, isRun = used.isRun();

    RQ_DataArrayHandle rows;
    if (indexRemap || !isRun)
        rows = narrow ? remap<int32_t>(used, points) : remap<int64_t>(used, points);
    if (indexRemap)
        *indexRemap = rows;
    if (unchanged)
    {
        topology_->noteUsesAll(points);
        return const_cast<RQ_PrimPolygonMesh *>(this);
    }

    // What is kept follows from the vertex list alone: meshes made again from the same list get the same ids.
    const uint64_t origin = RQmixId(uint64_t(vertexList_->getDataId())) + RQmixId(uint64_t(points));
    const int64_t keptId = rq::validId(RQmixId(origin)), listId = rq::validId(RQmixId(origin + 1));
    RQ_DataArrayHandle kept, list = vertexList_;
    RQ_AttributeListHandle shared;
    if (isRun)
    {
        const int64_t first = used.first();
        kept = new RQ_DARange(first, first + used.count(), 1);
        kept->setDataId(keptId);
        shared = shared_->createSubArray(first, used.count());
        if (first > 0)
            list = narrow ? shift<int32_t>(*vertexList_, first) : shift<int64_t>(*vertexList_, first);
    }
    else
    {
        kept = narrow ? usedRows<int32_t>(used) : usedRows<int64_t>(used);
        kept->setDataId(keptId);  // before the views, whose ids come of it
        shared = shared_->createIndirect(kept);
        list = narrow ? renumber<int32_t>(*vertexList_, rows) : renumber<int64_t>(*vertexList_, rows);
    }
    if (list != vertexList_)
        list->setDataId(listId);
    const RQ_PolygonMeshHandle mesh = clone(list, shared, vertex_, uniform_, detail_);
    mesh->topology_->noteUsesAll(used.count());
    mesh->followElements(nullptr, kept);
    return mesh;
}

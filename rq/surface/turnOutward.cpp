#include <algorithm>
#include <vector>

#include <host/bas/Parallel.h>
#include <host/bas/hashBytes.h>
#include <rq/data/Counts.h>
#include <rq/data/DANumeric.h>
#include <rq/data/Values.h>
#include <rq/data/mixId.h>
#include <rq/surface/detail/Cells.h>
#include <rq/surface/detail/outerFaces.h>

namespace rq
{
namespace
{
// A face costs 50 ns.
constexpr int64_t kFacesPerTask = 2048;

using Flags = std::vector<char>;  // one a face

/// Six times the volume of a cell, negative where its corners go the wrong way round; 0 where a point is none.
template <class Cells> double volumeOf(const typename Cells::Point *cell, const Positions &positions)
{
    std::array<BAS_Vec3d, Cells::kCorners> corners;
    for (int i = 0; i < Cells::kCorners; ++i)
    {
        if (cell[i] < 0 || cell[i] >= positions.entries())
            return 0.0;
        corners[size_t(i)] = positions[cell[i]] - positions[cell[0]];
    }
    double volume = 0.0;
    for (int f = 0; f < Cells::kFaces; ++f)
    {
        const auto face = Cells::face(corners.data(), f);
        for (size_t i = 2; i < face.size(); ++i)
            volume += face[0] ^ (face[i - 1] % face[i]);
    }
    return volume;
}

template <class Shape, class Point>
Flags findInverted(const OuterFaces &faces, const RQ_DataArray &vertexList, const Positions &positions)
{
    const Values<Point> list(vertexList);
    const Cells<Shape, Point> cells(list.data(), list.entries() / Shape::kCorners);
    Flags inverted(size_t(faces.counts.entries()));
    host::parallelFor(faces.counts.entries(), kFacesPerTask, [&](int64_t face) {
        const Point *cell = cells.corners(faces.sourceCell->getI64(face));
        inverted[size_t(face)] = volumeOf<Cells<Shape, Point>>(cell, positions) < 0.0;
    });
    return inverted;
}

/// What corners have, with the marked faces turned about; each keeps its first corner.
template <class T> RQ_DataArrayHandle turned(const RQ_DataArray &ofCorners, const Counts &counts, const Flags &marked)
{
    const Values<T> values(ofCorners);
    const BAS_IntrusivePtr<RQ_DANumeric<T>> made(new RQ_DANumeric<T>(values.entries(), 1, RQ_TYPE_NONE));
    host::parallelFor(counts.entries(), kFacesPerTask, [&](int64_t face) {
        const int64_t begin = counts.begin(face), end = counts.end(face);
        T *const last = std::copy(values.begin() + begin, values.begin() + end, made->data() + begin);
        if (marked[size_t(face)])
            std::reverse(made->data() + begin + 1, last);
    });
    if (ofCorners.getDataId() != -1)
        made->setDataId(validId(RQmixId(uint64_t(ofCorners.getDataId())) + host::hashBytes({marked.data(), marked.size()})));
    return made;
}

RQ_DataArrayHandle turned(const RQ_DataArrayHandle &ofCorners, const Counts &counts, const Flags &marked)
{
    return ofCorners->getStorage() == RQ_STORAGE_INT64 ? turned<int64_t>(*ofCorners, counts, marked)
                                                       : turned<int32_t>(*ofCorners, counts, marked);
}
}  // namespace

template <class Shape>
OuterFacesHandle turnOutward(const OuterFacesHandle &faces, const RQ_DataArray &vertexList, const Positions &positions)
{
    const Flags inverted = faces->vertexList->getStorage() == RQ_STORAGE_INT64
                               ? findInverted<Shape, int64_t>(*faces, vertexList, positions)
                               : findInverted<Shape, int32_t>(*faces, vertexList, positions);
    if (std::find(inverted.begin(), inverted.end(), true) == inverted.end())
        return faces;
    const Counts counts(faces->counts);
    const BAS_IntrusivePtr<OuterFaces> outward(new OuterFaces);
    outward->counts = faces->counts;
    outward->vertexList = turned(faces->vertexList, counts, inverted);
    outward->sourceVertex = turned(faces->sourceVertex, counts, inverted);
    outward->sourceCell = faces->sourceCell;
    return outward;
}

template OuterFacesHandle turnOutward<TetShape>(const OuterFacesHandle &, const RQ_DataArray &, const Positions &);
template OuterFacesHandle turnOutward<HexShape>(const OuterFacesHandle &, const RQ_DataArray &, const Positions &);
}  // namespace rq

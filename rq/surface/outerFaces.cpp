#include <rq/surface/detail/outerFaces.h>

#include <limits>

#include <rq/data/DANumeric.h>
#include <rq/data/Values.h>
#include <rq/data/mixId.h>
#include <rq/surface/detail/FaceMatching.h>

namespace rq
{
namespace
{
// A cell inside costs half a nanosecond, a face outside 10.
constexpr int64_t kCellsPerBlock = 16384;

/// How many faces there are, and their corners.
struct Tally
{
    int64_t faces = 0, corners = 0;
};

template <class T> BAS_IntrusivePtr<RQ_DANumeric<T>> integers(int64_t count)
{
    return new RQ_DANumeric<T>(count, 1, RQ_TYPE_NONE);
}

template <class Cells> class OuterFaceWriter
{
public:
    using Point = typename Cells::Point;

    OuterFaceWriter(const Cells &cells, int64_t points)
        : cells_(cells), found_(cells, points), before_(size_t((cells.count() + kCellsPerBlock - 1) / kCellsPerBlock) + 1)
    {
        host::parallelFor(blocks(), 1, [this](int64_t block) {
            Tally &tally = before_[size_t(block) + 1];
            forEachFace(block, [&tally](int64_t, const auto &outline) {
                ++tally.faces;
                tally.corners += outline.count;
            });
        });
        for (size_t block = 1; block < before_.size(); ++block)
            before_[block] = {before_[block].faces + before_[block - 1].faces,
                              before_[block].corners + before_[block - 1].corners};
    }

    BAS_IntrusivePtr<OuterFaces> write() const
    {
        return cells_.count() * Cells::kCorners <= std::numeric_limits<int32_t>::max() ? writeAs<int32_t>()
                                                                                       : writeAs<int64_t>();
    }

private:
    int64_t blocks() const { return int64_t(before_.size()) - 1; }

    // Call `visit(cell, outline)` for the outer faces of a block.
    template <class Visit> void forEachFace(int64_t block, Visit &&visit) const
    {
        const int64_t end = std::min(cells_.count(), (block + 1) * kCellsPerBlock);
        for (int64_t cell = block * kCellsPerBlock; cell < end; ++cell)
            for (unsigned faces = found_.outerFaces(cell); faces; faces &= faces - 1)
                visit(cell, Cells::outline(cells_.corners(cell), std::countr_zero(faces)));
    }

    template <class Source> BAS_IntrusivePtr<OuterFaces> writeAs() const
    {
        const auto [faces, corners] = before_.back();
        const bool uniform = corners == faces * Cells::kFaceCorners;
        const auto counts = integers<int32_t>(uniform ? 0 : faces);
        const auto list = integers<Point>(corners);
        const auto vertices = integers<Source>(corners), cells = integers<Source>(faces);
        host::parallelFor(blocks(), 1, [&](int64_t block) {
            auto [face, corner] = before_[size_t(block)];
            forEachFace(block, [&, face = face, corner = corner](int64_t cell, const auto &outline) mutable {
                for (int i = 0; i < outline.count; ++i, ++corner)
                {
                    const int64_t vertex = cell * Cells::kCorners + outline.corners[size_t(i)];
                    vertices->data()[corner] = Source(vertex);
                    list->data()[corner] = cells_.corners(0)[vertex];
                }
                if (!uniform)
                    counts->data()[face] = outline.count;
                cells->data()[face++] = Source(cell);
            });
        });
        const BAS_IntrusivePtr<OuterFaces> all(new OuterFaces);
        if (uniform)
            all->counts.init(faces, Cells::kFaceCorners);
        else
            all->counts.init(counts);
        all->vertexList = list;
        all->sourceVertex = vertices;
        all->sourceCell = cells;
        return all;
    }

    const Cells &cells_;
    FaceMatching<Cells> found_;
    std::vector<Tally> before_;  // by block, and behind the last those of all
};

template <class Shape, class Point> BAS_IntrusivePtr<OuterFaces> find(const RQ_DataArray &vertexList, int64_t points)
{
    const Values<Point> list(vertexList);
    const Cells<Shape, Point> cells(list.data(), list.entries() / Shape::kCorners);
    return OuterFaceWriter(cells, points).write();
}

// What is found follows from the list alone.
void nameAfter(const RQ_DataArray &vertexList, int corners, OuterFaces &faces)
{
    if (vertexList.getDataId() == -1)
        return;
    uint64_t origin = RQmixId(uint64_t(vertexList.getDataId())) + RQmixId(uint64_t(corners));
    for (const RQ_DataArrayHandle &array : {faces.vertexList, faces.sourceVertex, faces.sourceCell})
        array->setDataId(validId(RQmixId(origin++)));
}

template <class Shape> OuterFacesHandle findOuterFaces(const RQ_DataArray &vertexList, int64_t points)
{
    // Narrow points also number the corners.
    const bool isWide =
        vertexList.getStorage() == RQ_STORAGE_INT64 || vertexList.entries() > std::numeric_limits<int32_t>::max();
    const BAS_IntrusivePtr<OuterFaces> faces =
        isWide ? find<Shape, int64_t>(vertexList, points) : find<Shape, int32_t>(vertexList, points);
    nameAfter(vertexList, Shape::kCorners, *faces);
    return faces;
}
}  // namespace

int64_t OuterFaces::getMemoryUsage() const
{
    int64_t bytes = int64_t(sizeof(*this)) + counts.getMemoryUsage();
    for (const RQ_DataArrayHandle &array : {vertexList, sourceVertex, sourceCell})
        bytes += array->getMemoryUsage();
    return bytes;
}

const CellKind kTetrahedra{TetShape::kCorners, findOuterFaces<TetShape>, turnOutward<TetShape>};
const CellKind kHexahedra{HexShape::kCorners, findOuterFaces<HexShape>, turnOutward<HexShape>};
}  // namespace rq

#include <apps/viewport/siftTriangles.h>

#include <algorithm>

#include <apps/viewport/pictureCells.h>
#include <host/bas/Parallel.h>

namespace rq::viewport
{
namespace
{
// A point costs about 5 ns, a triangle 4 ns.
constexpr int64_t kPointsPerTask = 16384;
constexpr int64_t kTrianglesPerBlock = 4096;

CornerNames siftBlock(const TriangleArrays &mesh, int64_t begin, int64_t end, const CellSpace &space, const Cells *cells,
                      CornerName name)
{
    // Two loops, since the first becomes a few instructions on all four bounds at once.
    Cells triangles[kTrianglesPerBlock];
    const int32_t *points = mesh.corners + 3 * begin;
    for (int64_t i = 0; i < end - begin; ++i, points += 3)
    {
        const Cells &a = cells[points[0]], &b = cells[points[1]], &c = cells[points[2]];
        for (int k = 0; k < 4; ++k)
        {
            const int16_t ofTwo = a.bounds[k] < b.bounds[k] ? a.bounds[k] : b.bounds[k];
            triangles[i].bounds[k] = ofTwo < c.bounds[k] ? ofTwo : c.bounds[k];
        }
    }
    int64_t kept[kTrianglesPerBlock];
    int64_t count = 0;
    for (int64_t i = 0; i < end - begin; ++i)
    {
        kept[count] = begin + i;
        count += triangles[i].mayHoldMiddle();
    }
    count =
        std::remove_if(kept, kept + count, [&](int64_t i) { return missesMiddle(mesh, space, i, triangles[i - begin]); }) -
        kept;
    CornerNames names(size_t(3 * count));
    for (int64_t i = 0; i < 3 * count; ++i)
    {
        const int64_t corner = 3 * kept[i / 3] + i % 3;
        names[size_t(i)] = name == CornerName::Point ? mesh.corners[corner] : int32_t(corner);
    }
    return names;
}
}  // namespace

CornerNames siftTriangles(const TriangleArrays &mesh, const PictureSpace &space, CornerName name)
{
    std::vector<Cells, BAS_BlockAllocator<Cells>> cells(size_t(mesh.points));
    const CellSpace cellSpace(space);
    host::parallelForRange(mesh.points, kPointsPerTask,
                           [&](int64_t begin, int64_t end) { findCells(mesh, cellSpace, begin, end, cells.data()); });

    const int64_t blocks = (mesh.triangles + kTrianglesPerBlock - 1) / kTrianglesPerBlock;
    std::vector<CornerNames> kept(static_cast<size_t>(blocks));
    host::parallelFor(blocks, 1, [&](int64_t block) {
        const int64_t begin = block * kTrianglesPerBlock, end = std::min(begin + kTrianglesPerBlock, mesh.triangles);
        kept[size_t(block)] = siftBlock(mesh, begin, end, cellSpace, cells.data(), name);
    });

    std::vector<size_t> places(1, 0);
    for (const CornerNames &names : kept)
        places.push_back(places.back() + names.size());
    CornerNames all(places.back());
    host::parallelFor(blocks, 1, [&](int64_t block) {
        std::ranges::copy(kept[size_t(block)], all.begin() + int64_t(places[size_t(block)]));
    });
    return all;
}
}  // namespace rq::viewport

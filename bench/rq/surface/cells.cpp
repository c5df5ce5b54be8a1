#include <bench/cellMeshes.h>
#include <rq/data/DANumeric.h>
#include <rq/surface/PrimHexMesh.h>
#include <rq/surface/PrimTetMesh.h>

namespace
{
RQ_CellMeshHandle makeMesh(const bench::CellMesh &cells)
{
    RQ_CellMeshHandle mesh;
    if (cells.cornersOfEach == 4)
        mesh = new RQ_PrimTetMesh;
    else
        mesh = new RQ_PrimHexMesh;
    const RQ_AttributeListHandle none(new RQ_AttributeList(new RQ_AttributeMap));
    mesh->init(
        new RQ_DANumeric<int32_t>(cells.corners.data(), int64_t(cells.corners.size()), 1, RQ_TYPE_NONE),
        none->addAttribute("P", new RQ_DANumeric<float>(cells.positions.data(), cells.points(), 3, RQ_TYPE_POINT), false));
    return mesh;
}

/// The same cells, about which nothing is known yet.
RQ_CellMeshHandle unknown(const RQ_CellMeshHandle &mesh)
{
    const RQ_CellMeshHandle copy(static_cast<RQ_PrimCellMesh *>(mesh->clone().get()));
    copy->init(mesh->getVertexList(), mesh->getPointAttributes());
    return copy;
}

bench::Work ours(const bench::CellMeshPtr &cells)
{
    const RQ_CellMeshHandle mesh = makeMesh(*cells);
    const auto run = [mesh] { return unknown(mesh)->getOuterFaces(); };
    return {[run] { return bench::keep(run()); },
            [=] { return std::abs(double(run()->getFaceCount() - cells->outerFaces)) / double(cells->outerFaces); }};
}

/// What anybody would write: sort all faces by their points, and keep those that have no equal neighbour.
template <size_t kFaces, size_t kCorners>
std::vector<int64_t> plainOuterFaces(const bench::CellMesh &cells,
                                     const std::array<std::array<int, kCorners>, kFaces> &faces)
{
    struct Face
    {
        std::array<int32_t, kCorners> points;
        int32_t number;
    };
    std::vector<Face> all;
    all.reserve(size_t(cells.cells()) * kFaces);
    for (int64_t cell = 0; cell < cells.cells(); ++cell)
        for (const auto &corners : faces)
        {
            Face face{{}, int32_t(all.size())};
            for (size_t i = 0; i < kCorners; ++i)
                face.points[i] = cells.corners[size_t(cell * cells.cornersOfEach + corners[i])];
            std::sort(face.points.begin(), face.points.end());
            all.push_back(face);
        }
    std::sort(all.begin(), all.end(), [](const Face &a, const Face &b) { return a.points < b.points; });
    std::vector<int64_t> outer;
    for (size_t i = 0; i < all.size(); ++i)
        if ((i == 0 || all[i - 1].points != all[i].points) && (i + 1 == all.size() || all[i + 1].points != all[i].points))
            outer.push_back(all[i].number);
    std::sort(outer.begin(), outer.end());
    return outer;
}

bench::Work prototype(const bench::CellMeshPtr &cells)
{
    const auto run = [cells] {
        if (cells->cornersOfEach == 4)
            return plainOuterFaces<4, 3>(*cells, {{{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}}});
        return plainOuterFaces<6, 4>(*cells,
                                     {{{0, 3, 2, 1}, {4, 5, 6, 7}, {0, 1, 5, 4}, {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 0, 4, 7}}});
    };
    return {[run] { return bench::keep(run()); },
            [=] { return std::abs(double(int64_t(run().size()) - cells->outerFaces)) / double(cells->outerFaces); }};
}

const bool registered = [] {
    for (const int threads : {1, 2})
        bench::addOuterFaces("ours", threads, ours);
    bench::addOuterFaces("prototype", 1, prototype);
    return true;
}();
}  // namespace

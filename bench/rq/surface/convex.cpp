#include <memory>

#include <bench/meshAreas.h>
#include <bench/rq/surface/quads.h>

namespace
{
double errorOf(const bench::QuadMesh &quads, const RQ_PrimPolygonMesh &mesh)
{
    RQ_ConvexArrays arrays;
    mesh.getConvexArrays(arrays, 3);
    return bench::areaErrorOfPoints(quads, arrays.vertexList->entries(),
                                    [&](int64_t i) { return arrays.vertexList->getI64(i); });
}

const bool registered = [] {
    const auto prepare = [] {
        const auto quads = std::make_shared<bench::QuadMesh>(bench::kTriangulationCells);
        const RQ_PolygonMeshHandle mesh = bench::makeMesh(*quads);
        return bench::Work{[mesh] {
                               const auto arrays = std::make_shared<RQ_ConvexArrays>();
                               mesh->getConvexArrays(*arrays, 3);
                               return std::shared_ptr<void>(arrays);
                           },
                           [mesh, quads] { return errorOf(*quads, *mesh); }};
    };
    for (const int threads : {1, 2})
        bench::addTriangulation("ours", threads, true, prepare);
    return true;
}();
}  // namespace

#include <memory>

#include <bench/meshAreas.h>
#include <rq/data/DANumeric.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace
{
RQ_PolygonMeshHandle makeMesh(const bench::QuadMesh &quads)
{
    RQ_AttributeMapHandle map(new RQ_AttributeMap);
    map->add("P", true);
    RQ_AttributeListHandle shared(new RQ_AttributeList(map, 1));
    shared->set(0, new RQ_DANumeric<float>(quads.positions.data(), quads.points(), 3, RQ_TYPE_POINT), 0);
    const RQ_DataArrayHandle list(new RQ_DANumeric<int32_t>(quads.indices.data(), int64_t(quads.indices.size())));
    return new RQ_PrimPolygonMesh(RQ_CountArray(quads.faces(), 4), list, shared);
}

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
        const RQ_PolygonMeshHandle mesh = makeMesh(*quads);
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

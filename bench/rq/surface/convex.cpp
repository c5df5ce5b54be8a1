#include <bench/faceJobs.h>
#include <bench/rq/surface/faces.h>

namespace
{
double errorOf(const bench::FaceMesh &faces, const RQ_ConvexArrays &arrays)
{
    return bench::areaErrorOfPoints(faces, arrays.vertexList->entries(),
                                    [&](int64_t i) { return arrays.vertexList->getI64(i); });
}

bench::Work makeArrays(const bench::FaceMeshPtr &faces)
{
    const RQ_PolygonMeshHandle mesh = bench::makeMesh(*faces);
    const auto run = [mesh] {
        const auto arrays = std::make_shared<RQ_ConvexArrays>();
        mesh->getConvexArrays(*arrays, 3);
        return arrays;
    };
    return {run, [=] { return errorOf(*faces, *run()); }};
}

bench::Work makeSmallMesh(const bench::FaceMeshPtr &faces)
{
    const RQ_PolygonMeshHandle mesh = bench::makeMesh(*faces);
    return {bench::repeated([mesh] { return bench::keep(mesh->convex(3)); }),
            [=] { return std::abs(double(mesh->convex(3)->getFaceCount() - faces->triangles())); }};
}

const bool registered = [] {
    for (const int threads : {1, 2})
        bench::addTriangulation({"quads1M", "quads4M", "mixed1M"}, {"ours", threads, true}, makeArrays);
    bench::addSmallJob("convex3", {"ours"}, makeSmallMesh);
    return true;
}();
}  // namespace

#include <bench/faceJobs.h>
#include <bench/plainMeshJobs.h>
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

bench::Work makePlain(const bench::FaceMeshPtr &faces)
{
    return {[faces] { return bench::keep(bench::plain::cutFaces(*faces)); },
            [faces] {
                const bench::plain::Triangles made = bench::plain::cutFaces(*faces);
                return bench::areaErrorOfPoints(*faces, int64_t(made.points.size()),
                                                [&](int64_t i) { return made.points[size_t(i)]; });
            }};
}

bench::Work makeSmallPlain(const bench::FaceMeshPtr &faces)
{
    return {bench::repeated([faces] { return bench::keep(bench::plain::cutFaces(*faces)); }), nullptr};
}

const bool registered = [] {
    for (const int threads : {1, 2})
    {
        bench::addTriangulation({"quads1M", "quads4M", "mixed1M"}, {"ours", threads, true}, makeArrays);
        bench::addLargeFaces({"ours", threads}, makeArrays);
    }
    bench::addTriangulation({"quads1M", "quads4M", "mixed1M"}, {"prototype"}, makePlain);
    bench::addLargeFaces({"prototype"}, makePlain);
    bench::addSmallJob("convex3", {"prototype"}, makeSmallPlain);
    bench::addSmallJob("convex3", {"ours"}, makeSmallMesh);
    return true;
}();
}  // namespace

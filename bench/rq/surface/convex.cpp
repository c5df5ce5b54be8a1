#include <bench/faceJobs.h>
#include <bench/plainMeshJobs.h>
#include <bench/rq/surface/faces.h>
#include <rq/surface/Convexer.h>

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

/// One polygon after the other, as they come where there is no mesh.
bench::Work makeAlone(const bench::FaceMeshPtr &faces)
{
    const rq::Positions positions(bench::makeMesh(*faces)->getShared()->get("P", 0));
    const RQ_DataArrayHandle list = bench::makeIntegers(faces->corners);
    const auto run = [=] {
        const auto corners = std::make_shared<bench::plain::Row<int64_t>>();
        corners->reserve(size_t(3 * faces->triangles()));
        RQ_Convexer convexer;
        convexer.setSource(positions, list);
        for (int64_t face = 0; face < faces->faces(); ++face)
        {
            convexer.processFace(faces->count(face), faces->starts[size_t(face)], 3, true);
            const int64_t *const cut = convexer.getVertexList(0);
            corners->insert(corners->end(), cut, cut + convexer.getVertexCount());
        }
        return corners;
    };
    return {run, [=] {
                const auto corners = run();
                return bench::areaErrorOfPoints(*faces, int64_t(corners->size()),
                                                [&](int64_t i) { return faces->corners[size_t((*corners)[size_t(i)])]; });
            }};
}

/// Pieces of up to eight corners.
bench::Work makePieces(const bench::FaceMeshPtr &faces)
{
    const RQ_PolygonMeshHandle mesh = bench::makeMesh(*faces);
    const auto run = [mesh] { return bench::keep(mesh->convex(8, false)); };
    return {run, [=] {
                const RQ_PolygonMeshHandle cut = mesh->convex(8, false);
                const RQ_CountArray &counts = cut->getFaceCountArray();
                std::vector<int64_t> fans;
                for (int64_t piece = 0; piece < cut->getFaceCount(); ++piece)
                    for (int64_t i = 2; i < counts.getCount(piece); ++i)
                        for (const int64_t corner : {int64_t(0), i - 1, i})
                            fans.push_back(cut->getVertexList()->getI64(counts.getOffset(piece) + corner));
                return bench::areaErrorOfPoints(*faces, int64_t(fans.size()), [&](int64_t i) { return fans[size_t(i)]; });
            }};
}

/// Per triangle that the faces could be cut into, to be set beside those rows.  Written: the corners of pieces, where they
/// come from, and as many counts and source faces as there are faces at least.
bench::Traffic trafficOfPieces(const bench::FaceMesh &mesh)
{
    return {double(mesh.triangles()),
            bench::readOnce(mesh) + 8.0 * double(mesh.corners.size()) + 8.0 * double(mesh.faces())};
}

const bool registered = [] {
    for (const int threads : {1, 2})
    {
        bench::addTriangulation({"quads1M", "quads4M", "mixed1M"}, {"ours", threads, true}, makeArrays);
        bench::addLargeFaces("convex3", {"ours", threads}, makeArrays);
        for (const char *mesh : {"quads1M", "mixed1M", "ngons"})
            bench::addFaceJob("convex8", mesh, {"ours", threads}, trafficOfPieces, makePieces);
    }
    bench::addLargeFaces("convex3-alone", {"ours"}, makeAlone);
    bench::addLargeFaces("convex3-alone", {"prototype"}, makePlain);
    bench::addTriangulation({"quads1M", "quads4M", "mixed1M"}, {"prototype"}, makePlain);
    bench::addLargeFaces("convex3", {"prototype"}, makePlain);
    bench::addSmallJob("convex3", {"prototype"}, makeSmallPlain);
    bench::addSmallJob("convex3", {"ours"}, makeSmallMesh);
    return true;
}();
}  // namespace

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

/// How far the pieces' areas, seen from above, and the triangles in them are from those of the faces, whichever is worse.
double errorOfPieces(const bench::FaceMesh &faces, const RQ_PrimPolygonMesh &pieces)
{
    const RQ_CountArray &counts = pieces.getFaceCountArray();
    double area = 0.0, triangles = 0.0;
    for (int64_t piece = 0; piece < pieces.getFaceCount(); ++piece)
    {
        const auto [first, count] = counts.getOffsetCount(piece);
        const auto at = [&](int64_t i) { return faces.position(pieces.getVertexList()->getI64(first + i)); };
        double twice = 0.0;
        for (int64_t i = 0; i < count; ++i)
        {
            const float *const a = at(i), *const b = at((i + 1) % count);
            twice += double(a[0]) * b[1] - double(a[1]) * b[0];
        }
        area += 0.5 * std::abs(twice);
        triangles += double(count - 2);
    }
    return std::max(std::abs(area - faces.area) / faces.area, std::abs(triangles / double(faces.triangles()) - 1.0));
}

/// Pieces of up to eight corners.
bench::Work makePieces(const bench::FaceMeshPtr &faces)
{
    const RQ_PolygonMeshHandle mesh = bench::makeMesh(*faces);
    return {[mesh] { return bench::keep(mesh->convex(8, false)); },
            [=] { return errorOfPieces(*faces, *mesh->convex(8, false)); }};
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

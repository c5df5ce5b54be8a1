#include <bench/faceJobs.h>
#include <bench/texturedMesh.h>
#include <rq/data/Values.h>

namespace
{
std::vector<bench::PlainTangents::Result> makePlain(const bench::FaceMesh &mesh)
{
    std::vector<int> counts;
    for (int64_t face = 0; face < mesh.faces(); ++face)
        counts.push_back(int(mesh.count(face)));
    return bench::PlainTangents::make(counts, bench::Textured(mesh).corners(mesh));
}

struct Tangents
{
    RQ_DataArrayHandle u, v;
};

Tangents makeOurs(const RQ_PrimPolygonMesh &mesh)
{
    const RQ_PolygonMeshHandle fresh(
        new RQ_PrimPolygonMesh(mesh.getFaceCountArray(), mesh.getVertexList(), mesh.getShared(), mesh.getVertex()));
    Tangents made;
    fresh->createFastTangents(made.u, made.v);
    return made;
}

/// How far ours are from the plain ones on a part of the mesh, at worst.
double errorOf(const bench::FaceMesh &whole)
{
    bench::FaceMesh faces = whole;
    faces.keepFaces(100000);
    const std::vector<bench::PlainTangents::Result> plain = makePlain(faces);
    const rq::Values<float> u(makeOurs(*bench::makeTextured(faces)).u);
    double worst = 0.0;
    for (size_t i = 0; i < plain.size(); ++i)
    {
        const float *t = u.data() + 3 * i;
        worst = std::max(worst, double((Imath::V3f(t[0], t[1], t[2]) - plain[i].tangent).length()));
    }
    return worst;
}

bench::Traffic traffic(const bench::FaceMesh &mesh)
{
    const double corners = double(mesh.corners.size());
    return {corners, bench::readOnce(mesh) + corners * (20.0 + 24.0)};
}

bench::Work prepareOurs(const bench::FaceMeshPtr &faces)
{
    const RQ_PolygonMeshHandle mesh = bench::makeTextured(*faces);
    return {[=] { return bench::keep(makeOurs(*mesh)); }, [=] { return errorOf(*faces); }};
}

bench::Work preparePlain(const bench::FaceMeshPtr &faces)
{
    return {[=] { return bench::keep(makePlain(*faces)); }, nullptr};
}

const bool registered = [] {
    for (const char *mesh : {"quads1M", "tris2M"})
    {
        for (const int threads : {1, 2})
            bench::addFaceJob("tangents", mesh, {"ours", threads, true}, traffic, prepareOurs);
        bench::addFaceJob("tangents", mesh, {"plain"}, traffic, preparePlain);
    }
    return true;
}();
}  // namespace

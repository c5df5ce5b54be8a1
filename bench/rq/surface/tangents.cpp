#include <bench/faceJobs.h>
#include <bench/plainTangents.h>
#include <bench/rq/surface/faces.h>
#include <rq/data/Values.h>

namespace
{
/// Texture and normals of a mesh, one of each a face-vertex: ten shells side by side, every other one mirrored.
struct Textured
{
    std::vector<float> texture, normals;

    explicit Textured(const bench::FaceMesh &mesh)
    {
        for (int64_t face = 0; face < mesh.faces(); ++face)
        {
            const int shell = int(10 * face / mesh.faces());
            for (const int32_t point : mesh.face(face))
            {
                const float *p = mesh.position(point);
                texture.insert(texture.end(), {(shell % 2 ? -p[0] : p[0]) * 1e-3f + float(shell), p[1] * 1e-3f});
                const float length = std::sqrt(0.01f * p[2] * p[2] + 1.0f);
                normals.insert(normals.end(), {0.1f * p[2] / length, 0.0f, 1.0f / length});
            }
        }
    }
};

RQ_PolygonMeshHandle makeTextured(const bench::FaceMesh &faces)
{
    const Textured textured(faces);
    const int64_t corners = int64_t(faces.corners.size());
    const RQ_PolygonMeshHandle mesh = bench::makeMesh(faces);
    const RQ_AttributeListHandle vertex =
        RQ_AttributeListHandle(new RQ_AttributeList(new RQ_AttributeMap, 1))
            ->addAttribute("uv", new RQ_DANumeric<float>(textured.texture.data(), corners, 2), true)
            ->addAttribute("N", new RQ_DANumeric<float>(textured.normals.data(), corners, 3, RQ_TYPE_NORMAL), true);
    return new RQ_PrimPolygonMesh(mesh->getFaceCountArray(), mesh->getVertexList(), mesh->getShared(), vertex);
}

std::vector<bench::PlainTangents::Result> makePlain(const bench::FaceMesh &mesh)
{
    const Textured textured(mesh);
    std::vector<int> counts;
    std::vector<bench::PlainTangents::Corner> corners;
    for (int64_t face = 0; face < mesh.faces(); ++face)
        counts.push_back(int(mesh.count(face)));
    for (size_t i = 0; i < mesh.corners.size(); ++i)
    {
        const float *p = mesh.position(mesh.corners[i]), *n = &textured.normals[3 * i], *t = &textured.texture[2 * i];
        corners.push_back({{p[0], p[1], p[2], n[0], n[1], n[2], t[0], t[1]}});
    }
    return bench::PlainTangents::make(counts, corners);
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
    const rq::Values<float> u(makeOurs(*makeTextured(faces)).u);
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
    const RQ_PolygonMeshHandle mesh = makeTextured(*faces);
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

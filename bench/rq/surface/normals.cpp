#include <memory>

#include <bench/faceJobs.h>
#include <bench/normalJobs.h>
#include <bench/plainMeshJobs.h>
#include <bench/rq/surface/quads.h>
#include <rq/data/Values.h>

namespace
{
using Make = RQ_DataArrayHandle (*)(const RQ_PrimPolygonMesh &);

template <RQ_NormalWeights weights> RQ_DataArrayHandle pointNormals(const RQ_PrimPolygonMesh &mesh)
{
    const BAS_IntrusivePtr<RQ_DANumeric<float>> normals(new RQ_DANumeric<float>(mesh.getPointCount(), 3, RQ_TYPE_NORMAL));
    mesh.pointNormals(reinterpret_cast<BAS_Vec3f *>(normals->data()), 0, "P", true, weights);
    return normals;
}

template <RQ_NormalWeights weights> RQ_DataArrayHandle cuspNormals(const RQ_PrimPolygonMesh &mesh)
{
    const BAS_IntrusivePtr<RQ_DANumeric<float>> normals(new RQ_DANumeric<float>(mesh.getVertexCount(), 3, RQ_TYPE_NORMAL));
    mesh.vertexNormals(reinterpret_cast<BAS_Vec3f *>(normals->data()), 0, "P", 60.0, true, weights);
    return normals;
}

/// With `again` the mesh is the same in every turn, as the segments of a moving mesh are: what follows from its topology is
/// there already.
bench::Work makeWork(const bench::QuadMesh &quads, Make make, bool again)
{
    const RQ_PolygonMeshHandle mesh = bench::makeMesh(quads);
    const auto run = [=] { return bench::keep(make(again ? *mesh : *bench::withOwnTopology(*mesh))); };
    const auto check = [=] {
        const rq::Values<float> normals(make(*mesh));
        return bench::lengthError(normals.data(), normals.entries());
    };
    return {run, check};
}

void addJob(const char *job, double outputs, Make make, bool again = false)
{
    for (const int threads : {1, 2})
        bench::addNormals(job, "ours", threads, outputs,
                          [make, again] { return makeWork(bench::QuadMesh(bench::kNormalCells), make, again); });
}

/// Along each column of points runs a crease.
void foldIntoRidges(bench::QuadMesh &quads)
{
    const int64_t columns = quads.size + 1;
    for (int64_t point = 0; point < quads.points(); ++point)
        if (point % columns % 2 == 1)
            quads.positions[size_t(3 * point + 2)] += 4.0f;
}

/// Points and faces in any order, with creases here and there, and at all points.
void addScattered(const char *job, Make make)
{
    constexpr double kCells = 400.0, kCorners = 4.0 * kCells * kCells;
    constexpr double kBytes = 12.0 * (kCells + 1.0) * (kCells + 1.0) + (4.0 + 12.0) * kCorners;
    for (const char *mesh : {"quads160k-shuffled", "ridges160k-shuffled"})
        bench::add({job, mesh, "ours", 1, kCorners, kBytes, false, [=] {
                        bench::QuadMesh quads{int(kCells)};
                        if (mesh[0] == 'r')
                            foldIntoRidges(quads);
                        bench::shuffle(quads);
                        return makeWork(quads, make, true);
                    }});
}

void addPlain(const char *job, double outputs, bench::plain::Row<BAS_Vec3f> (*make)(const bench::FaceMesh &))
{
    bench::addNormals(job, "prototype", 1, outputs, [make] {
        const auto faces = bench::faceMesh("quads1M");
        return bench::Work{[=] { return bench::keep(make(*faces)); },
                           [=] {
                               const auto normals = make(*faces);
                               return bench::lengthError(&normals.data()->x, int64_t(normals.size()));
                           }};
    });
}

/// Cusp normals of a mesh that has just been made.
bench::Work makeSmall(const bench::FaceMeshPtr &)
{
    const RQ_PolygonMeshHandle mesh = bench::makeMesh(bench::QuadMesh(10));
    return {bench::repeated(
                [mesh] { return bench::keep(cuspNormals<RQ_NORMAL_WEIGHTS_EQUAL>(*bench::withOwnTopology(*mesh))); }),
            nullptr};
}

bench::Work makeSmallPlain(const bench::FaceMeshPtr &faces)
{
    return {bench::repeated([faces] { return bench::keep(bench::plain::cuspNormals(*faces)); }), nullptr};
}

const bool registered = [] {
    addJob("face-normals", bench::kNormalFaces, [](const RQ_PrimPolygonMesh &mesh) { return mesh.faceNormals(); });
    addJob("point-normals-equal", bench::kNormalPoints, pointNormals<RQ_NORMAL_WEIGHTS_EQUAL>);
    addJob("point-normals-area", bench::kNormalPoints, pointNormals<RQ_NORMAL_WEIGHTS_AREA>);
    addJob("point-normals-angle", bench::kNormalPoints, pointNormals<RQ_NORMAL_WEIGHTS_ANGLE>);
    addJob("point-normals-equal-again", bench::kNormalPoints, pointNormals<RQ_NORMAL_WEIGHTS_EQUAL>, true);
    addJob("cusp60-equal", 4.0 * bench::kNormalFaces, cuspNormals<RQ_NORMAL_WEIGHTS_EQUAL>);
    addJob("cusp60-angle", 4.0 * bench::kNormalFaces, cuspNormals<RQ_NORMAL_WEIGHTS_ANGLE>);
    addJob("cusp60-equal-again", 4.0 * bench::kNormalFaces, cuspNormals<RQ_NORMAL_WEIGHTS_EQUAL>, true);
    addScattered("cusp60-equal-again", cuspNormals<RQ_NORMAL_WEIGHTS_EQUAL>);
    addScattered("cusp60-angle-again", cuspNormals<RQ_NORMAL_WEIGHTS_ANGLE>);
    addPlain("face-normals", bench::kNormalFaces, bench::plain::faceNormals);
    addPlain("point-normals-equal", bench::kNormalPoints, bench::plain::pointNormals);
    addPlain("cusp60-equal", 4.0 * bench::kNormalFaces, bench::plain::cuspNormals);
    bench::addSmallJob("cusp60-equal", {"ours"}, makeSmall);
    bench::addSmallJob("cusp60-equal", {"prototype"}, makeSmallPlain);
    return true;
}();
}  // namespace

#include <bench/normalJobs.h>
#include <bench/normalReference.h>
#include <bench/peers/openmeshMesh.h>

namespace
{
using Mesh = bench::OpenMeshMesh;

void computeFaces(Mesh &mesh) { mesh.update_face_normals(); }

void computePoints(Mesh &mesh)
{
    mesh.update_face_normals();
    mesh.update_vertex_normals();
}

void computeCusp(Mesh &mesh)
{
    mesh.update_face_normals();
    mesh.update_halfedge_normals(60.0 * M_PI / 180.0);
}

double errorOf(const bench::FaceMesh &faces, Mesh &mesh, void (*compute)(Mesh &))
{
    compute(mesh);
    if (compute == computeCusp)
    {
        double worst = 0.0;
        for (const auto corner : mesh.halfedges())
            if (!corner.is_boundary())
                worst = std::max(worst, bench::lengthError(mesh.normal(corner).data(), 1));
        return worst;
    }
    const bench::NormalReference reference(faces);
    return compute == computeFaces
               ? reference.faceError([&](int64_t i) { return mesh.normal(Mesh::FaceHandle(int(i))); })
               : reference.pointError([&](int64_t i) { return mesh.normal(Mesh::VertexHandle(int(i))); });
}

void addJob(const char *job, double outputs, void (*compute)(Mesh &))
{
    bench::addNormals(job, "openmesh", 1, outputs, [compute] {
        const bench::FaceMeshPtr faces = bench::faceMesh("quads1M");
        const auto mesh = std::make_shared<Mesh>(bench::makeOpenMesh(*faces));
        mesh->request_face_normals();
        mesh->request_vertex_normals();
        mesh->request_halfedge_normals();
        const auto run = [=]() -> std::shared_ptr<void> {
            compute(*mesh);
            return mesh;
        };
        return bench::Work{run, [=] { return errorOf(*faces, *mesh, compute); }};
    });
}

const bool registered = [] {
    // It gives every face the same weight.
    addJob("face-normals", bench::kNormalFaces, computeFaces);
    addJob("point-normals-equal", bench::kNormalPoints, computePoints);
    addJob("cusp60-equal", 4.0 * bench::kNormalFaces, computeCusp);
    return true;
}();
}  // namespace

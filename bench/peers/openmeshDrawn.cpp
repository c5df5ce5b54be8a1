#include <bench/drawnJobs.h>
#include <bench/peers/openmeshMesh.h>

namespace
{
using Mesh = bench::OpenMeshMesh;

/// Corners and normals one after the other, as they are uploaded; positions are those of the mesh.
struct Drawn
{
    std::vector<int32_t> corners;
    std::vector<Mesh::Normal> normals;
};

Drawn draw(Mesh &mesh)
{
    mesh.triangulate();
    mesh.request_face_normals();
    mesh.request_halfedge_normals();
    mesh.update_face_normals();
    mesh.update_halfedge_normals(bench::kDrawnCusp * M_PI / 180.0);
    Drawn drawn;
    drawn.corners.reserve(3 * mesh.n_faces());
    drawn.normals.reserve(3 * mesh.n_faces());
    for (const auto face : mesh.faces())
        for (const auto halfedge : mesh.fh_range(face))
        {
            drawn.corners.push_back(mesh.to_vertex_handle(halfedge).idx());
            drawn.normals.push_back(mesh.normal(halfedge));
        }
    return drawn;
}

const bool registered = [] {
    for (const int cells : {1000, 2000})
        bench::addDrawn(bench::kNormalsJob, "openmesh", cells, 1, [cells] {
            const auto whole = std::make_shared<const Mesh>(bench::makeOpenMesh(bench::quadFaces(cells)));
            const auto mesh = std::make_shared<Mesh>(*whole);
            // It works in place: the quads come back when a result is let go, which is not timed.
            const auto run = [=] {
                return std::shared_ptr<void>(new Drawn(draw(*mesh)), [=](Drawn *drawn) {
                    delete drawn;
                    *mesh = *whole;
                });
            };
            const auto check = [=] {
                Mesh triangles(*whole);
                const Drawn drawn = draw(triangles);
                return bench::DrawnReference(bench::QuadMesh(cells))
                    .error(
                        int64_t(triangles.n_faces()),
                        [&](int64_t i) { return triangles.point(Mesh::VertexHandle(drawn.corners[size_t(i)])).data(); },
                        [&](int64_t i) { return drawn.normals[size_t(i)].data(); });
            };
            return bench::Work{run, check};
        });
    return true;
}();
}  // namespace

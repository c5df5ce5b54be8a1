#include <CGAL/Polygon_mesh_processing/triangulate_faces.h>

#include <bench/peers/cgalMesh.h>

namespace
{
using bench::CGALMesh;

double errorOf(const bench::FaceMesh &faces, CGALMesh &mesh)
{
    CGAL::Polygon_mesh_processing::triangulate_faces(mesh);
    std::vector<std::array<double, 2>> corners;
    for (const CGALMesh::Face_index face : mesh.faces())
        for (const CGALMesh::Vertex_index point : mesh.vertices_around_face(mesh.halfedge(face)))
            corners.push_back({mesh.point(point).x(), mesh.point(point).y()});
    return bench::areaError(faces, int64_t(corners.size()), [&](int64_t i) { return corners[size_t(i)]; });
}

bench::Work prepare(const bench::FaceMeshPtr &faces)
{
    const CGALMesh mesh = bench::makeCGALMesh(*faces);
    const auto copies = std::make_shared<bench::Copies<CGALMesh>>([&] { return std::make_shared<CGALMesh>(mesh); });
    const auto run = [copies]() -> std::shared_ptr<void> {
        const std::shared_ptr<CGALMesh> copy = copies->take();
        CGAL::Polygon_mesh_processing::triangulate_faces(*copy);
        return copy;
    };
    return {run, [=] { return errorOf(*faces, *copies->take()); }};
}

const bool registered = [] {
    bench::addTriangulation({"quads1M", "mixed1M"}, {"cgal"}, prepare);
    return true;
}();
}  // namespace

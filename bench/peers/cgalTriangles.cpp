#include <CGAL/Polygon_mesh_processing/triangulate_faces.h>
#include <CGAL/Simple_cartesian.h>
#include <CGAL/Surface_mesh.h>

#include <bench/meshAreas.h>

namespace
{
using Point = CGAL::Simple_cartesian<double>::Point_3;
using Mesh = CGAL::Surface_mesh<Point>;

Mesh makeMesh()
{
    const bench::QuadMesh quads(bench::kTriangulationCells);
    Mesh mesh;
    std::vector<Mesh::Vertex_index> points;
    for (int64_t i = 0; i < quads.points(); ++i)
    {
        const float *position = quads.positions.data() + 3 * i;
        points.push_back(mesh.add_vertex(Point(position[0], position[1], position[2])));
    }
    for (int64_t face = 0; face < quads.faces(); ++face)
    {
        const int32_t *corners = quads.indices.data() + 4 * face;
        mesh.add_face(points[size_t(corners[0])], points[size_t(corners[1])], points[size_t(corners[2])],
                      points[size_t(corners[3])]);
    }
    return mesh;
}

double errorOf(Mesh &mesh)
{
    CGAL::Polygon_mesh_processing::triangulate_faces(mesh);
    std::vector<std::array<double, 2>> corners;
    for (const Mesh::Face_index face : mesh.faces())
        for (const Mesh::Vertex_index point : mesh.vertices_around_face(mesh.halfedge(face)))
            corners.push_back({mesh.point(point).x(), mesh.point(point).y()});
    return bench::areaError(bench::kTriangulationCells, int64_t(corners.size()),
                            [&](int64_t i) { return corners[size_t(i)]; });
}

const bool registered = [] {
    bench::addTriangulation("cgal", 1, false, [] {
        const Mesh mesh = makeMesh();
        const auto copies = std::make_shared<bench::Copies<Mesh>>([&] { return std::make_shared<Mesh>(mesh); });
        return bench::Work{[copies]() -> std::shared_ptr<void> {
                               const std::shared_ptr<Mesh> copy = copies->take();
                               CGAL::Polygon_mesh_processing::triangulate_faces(*copy);
                               return copy;
                           },
                           [copies] { return errorOf(*copies->take()); }};
    });
    return true;
}();
}  // namespace

#include <OpenMesh/Core/Mesh/PolyMesh_ArrayKernelT.hh>

#include <bench/meshAreas.h>

namespace
{
using Mesh = OpenMesh::PolyMesh_ArrayKernelT<>;

Mesh makeMesh()
{
    const bench::QuadMesh quads(bench::kTriangulationCells);
    Mesh mesh;
    for (int64_t i = 0; i < quads.points(); ++i)
        mesh.add_vertex(Mesh::Point(quads.positions.data() + 3 * i));
    for (int64_t face = 0; face < quads.faces(); ++face)
    {
        Mesh::VertexHandle corners[4];
        for (int64_t i = 0; i < 4; ++i)
            corners[i] = Mesh::VertexHandle(quads.indices[size_t(4 * face + i)]);
        mesh.add_face(corners, 4);
    }
    return mesh;
}

double errorOf(Mesh &mesh)
{
    mesh.triangulate();
    std::vector<std::array<double, 2>> corners;
    for (const auto face : mesh.faces())
        for (const auto point : mesh.fv_range(face))
            corners.push_back({mesh.point(point)[0], mesh.point(point)[1]});
    return bench::areaError(bench::kTriangulationCells, int64_t(corners.size()),
                            [&](int64_t i) { return corners[size_t(i)]; });
}

const bool registered = [] {
    bench::addTriangulation("openmesh", 1, false, [] {
        const Mesh mesh = makeMesh();
        const auto copies = std::make_shared<bench::Copies<Mesh>>([&] { return std::make_shared<Mesh>(mesh); });
        return bench::Work{[copies]() -> std::shared_ptr<void> {
                               const std::shared_ptr<Mesh> copy = copies->take();
                               copy->triangulate();
                               return copy;
                           },
                           [copies] { return errorOf(*copies->take()); }};
    });
    return true;
}();
}  // namespace

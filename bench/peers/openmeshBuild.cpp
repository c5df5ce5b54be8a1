#include <OpenMesh/Core/Mesh/TriMesh_ArrayKernelT.hh>

#include <bench/triangles.h>

namespace
{
using Mesh = OpenMesh::TriMesh_ArrayKernelT<>;

std::shared_ptr<Mesh> build(const bench::TriangleMesh &triangles)
{
    const auto mesh = std::make_shared<Mesh>();
    mesh->reserve(size_t(triangles.points()), size_t(triangles.triangles()) * 3 / 2, size_t(triangles.triangles()));
    for (int64_t i = 0; i < triangles.points(); ++i)
        mesh->add_vertex(Mesh::Point(triangles.positions.data() + 3 * i));
    for (int64_t face = 0; face < triangles.triangles(); ++face)
    {
        const int32_t *corners = triangles.corners.data() + 3 * face;
        mesh->add_face(Mesh::VertexHandle(corners[0]), Mesh::VertexHandle(corners[1]), Mesh::VertexHandle(corners[2]));
    }
    return mesh;
}

double errorOf(const bench::TriangleMesh &triangles)
{
    const std::shared_ptr<Mesh> mesh = build(triangles);
    std::vector<float> x;
    for (const auto face : mesh->faces())
        for (const auto point : mesh->fv_range(face))
            x.push_back(mesh->point(point)[0]);
    if (x.size() != triangles.corners.size())
        return 1.0;
    // A face may start at another of its corners.
    for (size_t at = 0; at < x.size(); at += 3)
        for (int turn = 0; turn < 3 && x[at] != triangles.positions[3 * size_t(triangles.corners[at])]; ++turn)
            std::rotate(x.begin() + int64_t(at), x.begin() + int64_t(at) + 1, x.begin() + int64_t(at) + 3);
    return triangles.error([&](int64_t corner) { return x[size_t(corner)]; });
}

const bool registered = [] {
    bench::addBuild("openmesh", false, [] {
        const auto triangles = std::make_shared<bench::TriangleMesh>();
        return bench::Work{[triangles]() -> std::shared_ptr<void> { return build(*triangles); },
                           [triangles] { return errorOf(*triangles); }};
    });
    return true;
}();
}  // namespace

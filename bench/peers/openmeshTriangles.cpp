#include <bench/peers/openmeshMesh.h>

namespace
{
using Mesh = bench::OpenMeshMesh;

double errorOf(const bench::FaceMesh &faces, Mesh &mesh)
{
    mesh.triangulate();
    std::vector<std::array<double, 2>> corners;
    for (const auto face : mesh.faces())
        for (const auto point : mesh.fv_range(face))
            corners.push_back({mesh.point(point)[0], mesh.point(point)[1]});
    return bench::areaError(faces, int64_t(corners.size()), [&](int64_t i) { return corners[size_t(i)]; });
}

bench::Work prepare(const bench::FaceMeshPtr &faces)
{
    const Mesh mesh = bench::makeOpenMesh(*faces);
    const auto copies = std::make_shared<bench::Copies<Mesh>>([&] { return std::make_shared<Mesh>(mesh); });
    const auto run = [copies]() -> std::shared_ptr<void> {
        const std::shared_ptr<Mesh> copy = copies->take();
        copy->triangulate();
        return copy;
    };
    return {run, [=] { return errorOf(*faces, *copies->take()); }};
}

const bool registered = [] {
    bench::addTriangulation({"quads1M", "mixed1M"}, {"openmesh"}, prepare);
    return true;
}();
}  // namespace

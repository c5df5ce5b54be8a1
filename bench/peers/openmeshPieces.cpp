#include <bench/meshJobs.h>
#include <bench/peers/openmeshMesh.h>

namespace
{
using Mesh = bench::OpenMeshMesh;

void removeUnused(Mesh &mesh)
{
    mesh.delete_isolated_vertices();
    mesh.garbage_collection();
}

bench::Work prepare(const bench::FaceMeshPtr &faces)
{
    Mesh mesh = bench::makeOpenMesh(*faces);
    mesh.request_vertex_status();
    mesh.request_edge_status();
    mesh.request_face_status();
    const auto copies = std::make_shared<bench::Copies<Mesh>>([&] { return std::make_shared<Mesh>(mesh); });
    const auto run = [copies] {
        const std::shared_ptr<Mesh> copy = copies->take();
        removeUnused(*copy);
        return copy;
    };
    return {run, [=] { return bench::unusedError(*faces, int64_t(run()->n_vertices())); }};
}

const bool registered = [] {
    bench::addRemoveUnused("remove-unused", {"quads1M", "tris2M"}, {"openmesh"}, prepare);
    return true;
}();
}  // namespace

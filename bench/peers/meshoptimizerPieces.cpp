#include <meshoptimizer.h>

#include <bench/meshJobs.h>

namespace
{
struct Kept
{
    std::vector<unsigned> corners;
    std::vector<float> positions;
};

Kept removeUnused(const bench::FaceMesh &mesh, const std::vector<unsigned> &corners)
{
    std::vector<unsigned> rows(size_t(mesh.points()));
    const size_t points = meshopt_optimizeVertexFetchRemap(rows.data(), corners.data(), corners.size(), rows.size());
    Kept kept{std::vector<unsigned>(corners.size()), std::vector<float>(3 * points)};
    meshopt_remapIndexBuffer(kept.corners.data(), corners.data(), corners.size(), rows.data());
    meshopt_remapVertexBuffer(kept.positions.data(), mesh.positions.data(), rows.size(), 3 * sizeof(float), rows.data());
    return kept;
}

bench::Work prepare(const bench::FaceMeshPtr &faces)
{
    const std::vector<unsigned> corners(faces->corners.begin(), faces->corners.end());
    return {[=] { return bench::keep(removeUnused(*faces, corners)); },
            [=] { return bench::unusedError(*faces, int64_t(removeUnused(*faces, corners).positions.size() / 3)); }};
}

const bool registered = [] {
    // It knows triangles only.
    bench::addRemoveUnused("remove-unused", {"tris2M"}, {"meshoptimizer"}, prepare);
    return true;
}();
}  // namespace

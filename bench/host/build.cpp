#include <bench/triangles.h>
#include <host/mod/Edit.h>

namespace
{
using bench::TriangleMesh;

MOD_ConstDetailHandle buildOurs(const TriangleMesh &mesh)
{
    MOD_Edit edit{MOD_DetailHandle()};
    if (!edit.appendPoints(mesh.points()) || !edit.appendPolygons(3, mesh.corners, true))
        return {};
    edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)
        ->write(0, mesh.points(), mesh.positions.data());
    return edit.commit();
}

struct Vectors
{
    std::vector<float> positions;
    std::vector<int32_t> corners, starts;

    explicit Vectors(const TriangleMesh &mesh) : positions(mesh.positions), corners(mesh.corners)
    {
        starts.reserve(size_t(mesh.triangles()));
        for (int64_t i = 0; i < mesh.triangles(); ++i)
            starts.push_back(int32_t(3 * i));
    }
};

const bool registered = [] {
    bench::addBuild("ours", true, [] {
        const auto mesh = std::make_shared<TriangleMesh>();
        return bench::Work{[mesh] { return bench::keep(buildOurs(*mesh)); },
                           [mesh] {
                               const MOD_ConstDetailHandle detail = buildOurs(*mesh);
                               return mesh->error([&](int64_t corner) {
                                   const MSH_Detail &built = *detail.readLock();
                                   return built.positions().pages<float>()->value(built.vertexPoint(corner));
                               });
                           }};
    });
    bench::addBuild("vectors", true, [] {
        const auto mesh = std::make_shared<TriangleMesh>();
        return bench::Work{[mesh] { return bench::keep(Vectors(*mesh)); },
                           [mesh] {
                               const Vectors built(*mesh);
                               return mesh->error([&](int64_t corner) {
                                   return built.positions[3 * size_t(built.corners[size_t(corner)])];
                               });
                           }};
    });
    return true;
}();
}  // namespace

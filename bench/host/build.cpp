#include <algorithm>

#include <bench/triangles.h>
#include <host/bas/MemoryTracker.h>
#include <host/mod/Edit.h>

namespace
{
using bench::TriangleMesh;

int64_t hostBytes()
{
    return BAS_MemoryTracker::current(BAS_MEMORY_HOST_PAGE) + BAS_MemoryTracker::current(BAS_MEMORY_HOST_TABLE);
}

/// The share of bytes beyond those expected and a twentieth more, 0 when there are none.
double excess(int64_t bytes, int64_t expected)
{
    return std::max(0.0, (double(bytes) - 1.05 * double(expected)) / double(expected));
}

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

/// A snapshot of ten million points is kept, and one attribute of them changed: the rest stays shared.
void addEditOfOne()
{
    constexpr int64_t kPoints = 10'000'000;
    bench::add(
        {"edit one attribute", "10M points", "ours", 1, double(kPoints), double(kPoints) * 4.0, true, [] {
             const MOD_DetailHandle detail;
             MOD_Edit edit(detail);
             static_cast<void>(edit.appendPoints(kPoints));
             for (const char *name : {"mass", "age"})
                 std::fill_n(edit.attribute(ELM_OWNER_POINT, name, ELM_STORAGE_REAL32)->writeAll<float>(), kPoints, 1.0f);
             std::fill_n(edit.attribute(ELM_OWNER_POINT, ELM_POSITION_NAME, ELM_STORAGE_REAL32, 3)->writeAll<float>(),
                         3 * kPoints, 1.0f);
             const MOD_ConstDetailHandle snapshot = edit.commit();
             const auto change = [detail, snapshot] {
                 MOD_Edit next(detail);
                 std::fill_n(next.attribute(ELM_OWNER_POINT, "age", ELM_STORAGE_REAL32)->writeAll<float>(), kPoints, 2.0f);
                 return bench::keep(next.commit());
             };
             return bench::Work{change, [change] {
                                    const int64_t before = hostBytes();
                                    const std::shared_ptr<void> changed = change();
                                    return excess(hostBytes() - before, 4 * kPoints);
                                }};
         }});
}

const bool registered = [] {
    bench::addBuild("ours", true, [] {
        const auto mesh = std::make_shared<TriangleMesh>();
        return bench::Work{[mesh] { return bench::keep(buildOurs(*mesh)); },
                           [mesh] {
                               const int64_t before = hostBytes();
                               const MOD_ConstDetailHandle detail = buildOurs(*mesh);
                               const int64_t bytes = hostBytes() - before;
                               const double wrong = mesh->error([&](int64_t corner) {
                                   const MSH_Detail &built = *detail.readLock();
                                   return built.positions().pages<float>()->value(built.vertexPoint(corner));
                               });
                               return wrong + excess(bytes, 12 * mesh->points() + 16 * mesh->triangles());
                           }};
    });
    addEditOfOne();
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

#include <bench/drawnJobs.h>
#include <bench/rq/bridge/details.h>
#include <rq/prim/RefineCollect.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace
{
using bench::QuadMesh;
using bench::Work;

/// Where normals come from.
enum class Normals
{
    NONE,
    OF_TRIANGLES,  ///< computed of the triangles
    ADDED          ///< added to the quads by the refinement's option, and read through the triangles' view of them
};

/// What a viewport uploads.
struct Drawn
{
    RQ_PolygonMeshHandle triangles;
    RQ_DataArrayHandle positionBuffer, cornerBuffer, normalBuffer;
    const float *positions = nullptr;
    const int32_t *corners = nullptr;
    const float *normals = nullptr;
};

Drawn draw(const MOD_ConstDetailHandle &detail, Normals which)
{
    RQ_RefineParms parms;
    parms.setAddVertexNormals(which == Normals::ADDED);
    parms.setCuspAngle(float(bench::kDrawnCusp));
    RQ_RefineCollect collect;
    RQ_MSHDetail::makeDetail(detail)->refine(collect, &parms);
    const RQ_PrimitiveHandle primitive = collect.getPrim(0);
    const auto &mesh = dynamic_cast<const RQ_PrimPolygonMesh &>(*primitive);
    Drawn drawn;
    drawn.triangles = mesh.convex(3);
    drawn.positions = drawn.triangles->getShared()->get("P")->getArray<float>(drawn.positionBuffer);
    drawn.corners = drawn.triangles->getVertexList()->getArray<int32_t>(drawn.cornerBuffer);
    if (which == Normals::NONE)
        return drawn;
    const RQ_DataArrayHandle normals =
        which == Normals::ADDED ? drawn.triangles->getVertex()->get("N")
                                : drawn.triangles->createVertexNormals(0, "P", bench::kDrawnCusp, true, RQ_STORAGE_REAL32);
    drawn.normals = normals->getArray<float>(drawn.normalBuffer);
    return drawn;
}

double errorOf(const QuadMesh &quads, const Drawn &drawn)
{
    const auto positionOf = [&](int64_t i) { return drawn.positions + 3 * drawn.corners[i]; };
    const int64_t triangles = drawn.triangles->getFaceCount();
    if (!drawn.normals)
        return std::abs(double(triangles) / (2.0 * double(quads.faces())) - 1.0);
    return bench::DrawnReference(quads).error(triangles, positionOf, [&](int64_t i) { return drawn.normals + 3 * i; });
}

void addOurs(const char *job, const char *who, int cells, int threads, Normals which)
{
    bench::addDrawn(job, who, cells, threads, [=] {
        const auto quads = std::make_shared<QuadMesh>(cells);
        const MOD_ConstDetailHandle detail = bench::makeDetail(*quads);
        return Work{[=] { return bench::keep(draw(detail, which)); }, [=] { return errorOf(*quads, draw(detail, which)); }};
    });
}

const bool registered = [] {
    for (const int threads : {1, 2})
    {
        addOurs(bench::kTrianglesJob, "ours", 1000, threads, Normals::NONE);
        for (const int cells : {1000, 2000})
        {
            addOurs(bench::kNormalsJob, "ours", cells, threads, Normals::OF_TRIANGLES);
            addOurs(bench::kNormalsJob, "ours, added to the quads", cells, threads, Normals::ADDED);
        }
    }
    return true;
}();
}  // namespace

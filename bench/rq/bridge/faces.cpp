#include <cmath>

#include <bench/Job.h>
#include <bench/rq/bridge/details.h>
#include <host/msh/Detail.h>
#include <host/msh/Faces.h>
#include <rq/prim/RefineCollect.h>
#include <rq/surface/PrimCurveMesh.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace
{
using bench::kCells;
using bench::QuadMesh;
using bench::Work;

constexpr double kFaces = double(kCells) * kCells;

enum class Kind
{
    SOUP,  ///< one of a million quads
    GRID,  ///< one of a million cells
    FANS,  ///< half a million of two triangles
    STRIPS,
    LINES  ///< a million open polygons of four vertices
};

MOD_ConstDetailHandle makeDetail(Kind kind)
{
    const QuadMesh quads(kCells);
    const std::vector<int32_t> fours(size_t(quads.faces()) / (kind == Kind::LINES ? 1 : 2), 4);
    const std::span<const int32_t> corners(quads.indices.data(), 4 * fours.size());
    std::vector<int32_t> points(size_t(quads.points()));
    std::iota(points.begin(), points.end(), 0);
    MOD_Edit edit{MOD_DetailHandle()};
    const auto append = [&] {
        switch (kind)
        {
        case Kind::SOUP:
            return edit.appendSoup({std::vector<int32_t>(size_t(quads.faces()), 4), quads.indices}, points);
        case Kind::GRID:
            return edit.appendGrids({kCells + 1, kCells + 1, false, false}, points);
        case Kind::FANS:
            return edit.appendTriangleFans(fours, corners);
        case Kind::STRIPS:
            return edit.appendTriangleStrips(fours, corners);
        default:
            return edit.appendPolygons(fours, corners, false);
        }
    };
    if (!edit.appendPoints(quads.points()) || !append())
        return {};
    bench::addPositions(edit, quads.positions);
    return edit.commit();
}

RQ_PrimitiveHandle refined(const MOD_ConstDetailHandle &detail, const RQ_RefineParms &parms)
{
    RQ_RefineCollect collect;
    RQ_MSHDetail::makeDetail(detail)->refine(collect, &parms);
    return collect.entries() > 0 ? collect.getPrim(collect.entries() - 1) : RQ_PrimitiveHandle();
}

double items(const RQ_PrimitiveHandle &primitive)
{
    if (const auto *mesh = dynamic_cast<const RQ_PrimPolygonMesh *>(primitive.get()))
        return double(mesh->getFaceCount());
    const auto *curves = dynamic_cast<const RQ_PrimCurveMesh *>(primitive.get());
    return curves ? double(curves->getCurveCount()) : 0.0;
}

/// From the detail to the mesh or the curves.
void addRefine(const char *mesh, Kind kind, int threads, int64_t curveLimit = -1)
{
    // The points of the corners are read where they lie, and written as the mesh has them.
    const double bytes = kFaces * (kind == Kind::FANS || kind == Kind::STRIPS ? 20.0 : kind == Kind::LINES ? 16.0 : 32.0);
    bench::add({"detail_to_mesh", mesh, "ours", threads, kFaces, bytes, false, [=] {
                    const MOD_ConstDetailHandle detail = makeDetail(kind);
                    RQ_RefineParms parms;
                    parms.setShowUnusedPoints(false);
                    parms.setMaxPolyCurveSize(curveLimit);
                    return Work{[=] { return bench::keep(refined(detail, parms)); },
                                [=] { return curveLimit < 0 ? std::abs(items(refined(detail, parms)) - kFaces) : 0.0; }};
                }});
}

/// The points of every corner, asked for one by one.
void addPlain(const char *mesh, Kind kind)
{
    bench::add({"detail_to_mesh", mesh, "plain loop over faces", 1, kFaces, 0.0, false, [kind] {
                    const MOD_ConstDetailHandle detail = makeDetail(kind);
                    return Work{[=] {
                                    const auto points = std::make_shared<std::vector<int32_t>>();
                                    for (ELM_Offset i = 0; i < detail.readLock()->primitiveCount(); ++i)
                                        for (const MSH_Faces::Face face : MSH_Faces(*detail.readLock(), i))
                                            for (int64_t corner = 0; corner < face.size(); ++corner)
                                                points->push_back(int32_t(face.point(corner)));
                                    return std::shared_ptr<void>(points);
                                },
                                {}};
                }});
}

const bool registered = [] {
    constexpr std::pair<const char *, Kind> kKinds[] = {
        {"soup1M", Kind::SOUP}, {"grid1M", Kind::GRID}, {"fans500k", Kind::FANS}, {"strips500k", Kind::STRIPS}};
    for (const auto &[mesh, kind] : kKinds)
    {
        addRefine(mesh, kind, 1);
        addRefine(mesh, kind, 2);
        addPlain(mesh, kind);
    }
    for (const int threads : {1, 2})
        addRefine("polylines1M", Kind::LINES, threads);
    addRefine("polylines1M, 1000 vertices a mesh", Kind::LINES, 1, 1000);
    return true;
}();
}  // namespace

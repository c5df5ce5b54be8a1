#include <bench/meshJobs.h>
#include <bench/plainMeshJobs.h>
#include <bench/rq/surface/faces.h>
#include <bench/rq/surface/quads.h>
#include <rq/data/Values.h>
#include <rq/prim/RefineCollect.h>

namespace
{
using Pieces = BAS_Array<RQ_PrimitiveHandle>;

/// With the positions of what is left, as the peers make them, or with views of the old ones.
template <bool gathered> bench::Work removeUnused(const bench::FaceMeshPtr &faces)
{
    const RQ_PolygonMeshHandle mesh = bench::makeMesh(*faces);
    const auto run = [mesh]() -> std::shared_ptr<void> {
        const RQ_PolygonMeshHandle kept = mesh->removeUnusedPoints();
        if (!gathered)
            return bench::keep(kept);
        return bench::keep(std::make_pair(kept, rq::Values<float>(kept->getShared()->get("P"))));
    };
    return {run, [=] { return bench::unusedError(*faces, mesh->removeUnusedPoints()->getPointCount()); }};
}

bench::Work removeUnusedPlain(const bench::FaceMeshPtr &faces)
{
    return {[faces] { return bench::keep(bench::plain::removeUnused(*faces)); },
            [faces] { return bench::unusedError(*faces, int64_t(bench::plain::removeUnused(*faces).positions.size())); }};
}

/// With `again` the mesh has been found to use all its points before.
template <bool again> bench::Work keepAll(const bench::FaceMeshPtr &faces)
{
    const RQ_PolygonMeshHandle mesh = bench::makeMesh(*faces);
    return {[mesh] { return bench::keep((again ? mesh : bench::withOwnTopology(*mesh))->removeUnusedPoints()); },
            [mesh] { return mesh->removeUnusedPoints() == mesh ? 0.0 : 1.0; }};
}

bench::Work piecesWork(const bench::FaceMeshPtr &faces, int64_t expected, const std::function<Pieces()> &cut)
{
    const auto check = [=] {
        const Pieces pieces = cut();
        int64_t sum = 0;
        for (const RQ_PrimitiveHandle &piece : pieces)
            sum += static_cast<const RQ_PrimPolygonMesh &>(*piece).getFaceCount();
        return bench::piecesError(*faces, sum, int64_t(pieces.size()), expected);
    };
    return {[cut] { return bench::keep(cut()); }, check};
}

bench::Work split(const bench::FaceMeshPtr &faces)
{
    const RQ_PolygonMeshHandle mesh = bench::makeMesh(*faces);
    return piecesWork(faces, (faces->faces() + bench::kFacesPerPiece - 1) / bench::kFacesPerPiece, [mesh] {
        Pieces pieces;
        mesh->splitMesh(bench::kFacesPerPiece, pieces);
        return pieces;
    });
}

template <int kinds> bench::Work partition(const bench::FaceMeshPtr &faces)
{
    const RQ_PolygonMeshHandle mesh = bench::makeMesh(*faces);
    const RQ_DataArrayHandle materials = bench::makeIntegers(bench::materialsOf(*faces, kinds));
    return piecesWork(faces, kinds, [mesh, materials] {
        Pieces pieces;
        mesh->partitionByMaterial(materials, pieces);
        return pieces;
    });
}

bench::Work refine(const bench::FaceMeshPtr &faces)
{
    const RQ_PolygonMeshHandle mesh = bench::makeMesh(*faces);
    const auto run = [mesh] {
        const auto sink = std::make_shared<RQ_RefineCollect>();
        mesh->refine(*sink, nullptr);
        return sink;
    };
    return {run, [=] { return std::abs(double(run()->entries()) / double(faces->faces()) - 1.0); }};
}

const bool registered = [] {
    for (const int threads : {1, 2})
    {
        const bench::Doer ours{"ours", threads};
        bench::addRemoveUnused("remove-unused", {"quads1M", "tris2M"}, ours, removeUnused<true>);
        bench::addRemoveUnused("remove-unused-view", {"quads1M", "tris2M"}, ours, removeUnused<false>);
        const auto traffic = [](const bench::FaceMesh &mesh) {
            return bench::Traffic{double(mesh.corners.size()), 4.0 * double(mesh.corners.size())};
        };
        bench::addFaceJob("remove-unused-none", "quads1M", ours, traffic, keepAll<false>);
        bench::addFaceJob("remove-unused-none-again", "quads1M", ours, traffic, keepAll<true>);
        bench::addPieces("split-65536", ours, split);
        bench::addPieces("partition-8", ours, partition<8>);
        bench::addPieces("partition-64", ours, partition<64>);
        bench::addFaceJob(
            "refine", "quads1M", ours,
            [](const bench::FaceMesh &mesh) {
                return bench::Traffic{double(mesh.faces()), 0.0};
            },
            refine);
    }
    bench::addRemoveUnused("remove-unused", {"quads1M", "tris2M"}, {"prototype"}, removeUnusedPlain);
    return true;
}();
}  // namespace

#include <rq/data/Counts.h>
#include <rq/data/DAIndirect.h>
#include <rq/data/DANumeric.h>
#include <rq/data/DARange.h>
#include <rq/data/DASubArray.h>
#include <rq/data/Values.h>
#include <rq/surface/detail/PointRanks.h>
#include <rq/surface/detail/meshPiece.h>

namespace
{
template <class Index> using Numbers = BAS_IntrusivePtr<RQ_DANumeric<Index>>;

template <class Index> Numbers<Index> makeNumbers(int64_t entries)
{
    return Numbers<Index>(new RQ_DANumeric<Index>(entries, 1, RQ_TYPE_NONE));
}

RQ_AttributeListHandle window(const RQ_AttributeListHandle &list, int64_t first, int64_t count)
{
    return list ? list->createSubArray(first, count) : nullptr;
}

RQ_AttributeListHandle selection(const RQ_AttributeListHandle &list, const RQ_DataArrayHandle &rows)
{
    return list ? list->createIndirect(rows) : nullptr;
}

RQ_CountArray countsOf(const RQ_PrimPolygonMesh &mesh, const RQ_DataArrayHandle &counts, int64_t faces)
{
    return mesh.getFaceCountArray().isUniform() ? RQ_CountArray(faces, mesh.getMaxVertexCount()) : RQ_CountArray(counts);
}

/// The vertex-list positions of the corners of some faces.
RQ_DataArrayHandle cornersOf(const RQ_CountArray &all, const RQ_CountArray &some, const rq::Values<int64_t> &faces)
{
    const Numbers<int64_t> corners = makeNumbers<int64_t>(some.sumCounts());
    const rq::Counts counts(all);
    int64_t *out = corners->data();
    for (const int64_t face : faces)
        for (int64_t corner = counts.begin(face); corner < counts.end(face); ++corner)
            *out++ = corner;
    return corners;
}
}  // namespace

RQ_PrimPolygonMesh::Piece RQ_PrimPolygonMesh::Piece::run(const RQ_PrimPolygonMesh &mesh, const RQ_DataArrayHandle &counts,
                                                         int64_t first, int64_t faces)
{
    Piece piece;
    piece.counts = countsOf(mesh, RQ_DASubArray::createSubArray(counts, first, faces), faces);
    piece.faces = new RQ_DARange(first, first + faces, 1);
    const int64_t corner = mesh.getVertexOffset(first), corners = piece.counts.sumCounts();
    piece.points = RQ_DASubArray::createSubArray(mesh.getVertexList(), corner, corners);
    piece.vertex = window(mesh.getVertex(), corner, corners);
    piece.uniform = window(mesh.getUniform(), first, faces);
    return piece;
}

RQ_PrimPolygonMesh::Piece RQ_PrimPolygonMesh::Piece::list(const RQ_PrimPolygonMesh &mesh, const RQ_DataArrayHandle &counts,
                                                          const RQ_DataArrayHandle &faces)
{
    Piece piece;
    piece.counts = countsOf(mesh, RQ_DAIndirect::createIndirect(counts, faces), faces->entries());
    piece.faces = faces;
    const RQ_DataArrayHandle corners = cornersOf(mesh.getFaceCountArray(), piece.counts, rq::Values<int64_t>(faces));
    piece.points = RQ_DAIndirect::createIndirect(mesh.getVertexList(), corners);
    piece.vertex = selection(mesh.getVertex(), corners);
    piece.uniform = selection(mesh.getUniform(), faces);
    return piece;
}

RQ_PolygonMeshHandle RQ_PrimPolygonMesh::makePiece(const Piece &piece, bool harden) const
{
    const auto build = [&]<class Index>(Index) {
        const rq::Values<Index> points(piece.points);
        const rq::PointRanks used(points.data(), points.size());
        const Numbers<Index> list = makeNumbers<Index>(points.size());
        used.copyRanksTo(list->data(), points.data(), points.size());
        RQ_AttributeListHandle shared;
        RQ_DataArrayHandle sources;
        if (used.isRun())
        {
            sources = new RQ_DARange(used.first(), used.first() + used.count(), 1);
            shared = window(shared_, used.first(), used.count());
        }
        else
        {
            const Numbers<Index> rows = makeNumbers<Index>(used.count());
            used.copyTo(rows->data());
            sources = rows;
            shared = selection(shared_, rows);
        }
        const RQ_PolygonMeshHandle made = clone(piece.counts, list, shared, piece.vertex, piece.uniform, detail_);
        made->followElements(piece.faces, sources);
        return made;
    };
    const bool wide = vertexList_->getStorage() == RQ_STORAGE_INT64;
    const RQ_PolygonMeshHandle mesh = wide ? build(int64_t()) : build(int32_t());
    mesh->setConvexed(convexed_);
    if (faceSets_)
        mesh->setFaceSetMap(faceSets_->followFaces(piece.faces));
    if (harden)
        mesh->hardenAttributes();
    return mesh;
}

#include <algorithm>

#include <host/bas/Parallel.h>
#include <rq/surface/detail/meshPiece.h>

bool RQ_PrimPolygonMesh::splitMesh(int64_t maxFaces, BAS_Array<RQ_PrimitiveHandle> &out, bool harden) const
{
    const int64_t faces = getFaceCount();
    if (maxFaces < 1 || faces <= maxFaces || !vertexList_)
        return false;
    const int64_t pieces = (faces - 1 + maxFaces) / maxFaces;
    const int64_t facesPerPiece = faces / pieces + (faces % pieces != 0 ? 1 : 0);
    const RQ_DataArrayHandle counts = getFaceCounts();
    out.assign(size_t(pieces), nullptr);
    host::parallelFor(pieces, 1, [&](int64_t piece) {
        const int64_t first = piece * facesPerPiece;
        const int64_t count = std::min(faces - first, facesPerPiece);
        out[size_t(piece)] = makePiece(Piece::run(*this, counts, first, count), harden);
    });
    return true;
}

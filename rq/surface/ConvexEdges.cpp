#include <rq/surface/detail/convexing.h>

#include <host/bas/Parallel.h>
#include <rq/data/Counts.h>
#include <rq/data/DANumeric.h>
#include <rq/data/Values.h>

RQ_DataArrayHandle rq::convexEdgeFlags(const RQ_CountArray &faces, const RQ_CountArray &pieces,
                                       const RQ_ConvexArrays &arrays)
{
    // A piece of three corners costs some 5 ns here.
    constexpr int64_t kPiecesPerTask = 8192;
    const Counts faceCorners(faces), pieceCorners(pieces);
    const Values<int64_t> sourceVertex(arrays.sourceVertex), sourceFace(arrays.sourceFace);
    const BAS_IntrusivePtr<RQ_DANumeric<uint8_t>> flags(new RQ_DANumeric<uint8_t>(pieces.sumCounts(), 1, RQ_TYPE_NONE));
    uint8_t *out = flags->data();
    host::parallelFor(pieces.entries(), kPiecesPerTask, [&](int64_t piece) {
        const int64_t begin = pieceCorners.begin(piece), end = pieceCorners.end(piece);
        const int64_t face = sourceFace[piece];
        for (int64_t corner = begin; corner < end; ++corner)
        {
            const int64_t from = sourceVertex[corner], to = sourceVertex[corner + 1 < end ? corner + 1 : begin];
            const int64_t next = from + 1 < faceCorners.end(face) ? from + 1 : faceCorners.begin(face);
            out[corner] = to == next;
        }
    });
    return flags;
}

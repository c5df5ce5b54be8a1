#include <rq/bridge/detail/gatherFaces.h>

#include <rq/bridge/detail/FaceWriter.h>
#include <rq/bridge/detail/parallelWalk.h>

namespace
{
// A polygon costs 0 to 10 ns in each pass, so a piece is up to 80 us of work.  Pieces are whole pages.
constexpr int64_t kPrimitivesPerPiece = 8 * ELM_PAGE_SIZE;

/// What lies in one piece of the range, or in all of it.
struct Tally
{
    rq::FaceTally closed, open;
    bool hasParts = false;

    void operator()(const rq::FaceRun &run) { (run.isClosed ? closed : open).add(run); }
    void operator()(const rq::ManyFaces &many) { hasParts = closed.add(many) || hasParts; }
    void add(const Tally &following)
    {
        closed.add(following.closed);
        open.add(following.open);
        hasParts = hasParts || following.hasParts;
    }
};

/// Writes one piece.
struct PieceWriter
{
    rq::FaceWriter &closed, &open;
    rq::FaceWriter::Place closedPlace, openPlace;

    void operator()(const rq::FaceRun &run)
    {
        if (run.isClosed)
            closed.write(closedPlace, run);
        else
            open.write(openPlace, run);
    }
    void operator()(const rq::ManyFaces &many) { closed.write(closedPlace, many); }
};
}  // namespace

void rq::GatheredFaces::append(GatheredFaces &following)
{
    following.closed.finish();
    following.open.finish();
    closed.append(following.closed);
    open.append(following.open);
    hasParts = hasParts || following.hasParts;
}

void rq::gatherFaces(const MSH_Detail &detail, const ELM_Range &range, GatheredFaces &all, BAS_Progress &progress)
{
    const PolygonReader reader(detail);
    const PieceWalk walk(detail, range, kPrimitivesPerPiece);
    std::vector<Tally> tallies(size_t(walk.pieces()));
    walk.run(progress, [&](int64_t piece, const ELM_Range &part) { reader.visit(part, tallies[size_t(piece)]); });

    Tally whole;
    std::vector<std::pair<FaceWriter::Place, FaceWriter::Place>> before;  // closed and open faces before each piece
    for (const Tally &tally : tallies)
    {
        before.push_back({{whole.closed.primitives.count, whole.closed.vertices.count},
                          {whole.open.primitives.count, whole.open.vertices.count}});
        whole.add(tally);
    }

    FaceWriter closed(whole.closed), open(whole.open);
    if (closed.isNeeded() || open.isNeeded())
        walk.run(progress, [&](int64_t piece, const ELM_Range &part) {
            const auto &[closedPlace, openPlace] = before[size_t(piece)];
            PieceWriter writer{closed, open, closedPlace, openPlace};
            reader.visit(part, writer);
        });
    if (progress.isInterrupted())
        return;
    GatheredFaces gathered{closed.finish(), open.finish(), whole.hasParts};
    all.append(gathered);
}

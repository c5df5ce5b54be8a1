#include <algorithm>
#include <numeric>

#include <host/bas/Parallel.h>
#include <rq/bridge/detail/FaceLists.h>
#include <rq/bridge/detail/PolygonReader.h>
#include <rq/bridge/detail/parallelWalk.h>

namespace
{
// A polygon costs 0 to 10 ns in each pass, so a piece is up to 80 us of work.  Pieces are whole pages.
constexpr int64_t kPrimitivesPerPiece = 8 * ELM_PAGE_SIZE;

/// Offsets that may be a run.
struct Offsets
{
    int64_t count = 0;
    ELM_Offset first = 0, next = 0;
    bool isRun = true;
    bool isNarrow = true;

    void add(ELM_Offset offset, int64_t added)
    {
        if (added > 0)
            add({added, offset, offset + added, true, offset + added <= ELM_INDEX32_LIMIT});
    }
    void add(const Offsets &following)
    {
        if (following.count == 0)
            return;
        isRun = following.isRun && (count == 0 || (isRun && following.first == next));
        isNarrow = isNarrow && following.isNarrow;
        first = count == 0 ? following.first : first;
        next = following.next;
        count += following.count;
    }
};

/// What lies in one piece of the range, or in all of it.
struct Tally
{
    Offsets primitives, vertices;
    int64_t least = 0, most = 0;
    RQ_MSHOffsetList open;

    void add(const rq::FaceRun &run)
    {
        int32_t fewest = *run.counts, greatest = *run.counts;
        for (int64_t i = 1; !run.isUniform && i < run.faces; ++i)
        {
            fewest = std::min(fewest, run.counts[i]);
            greatest = std::max(greatest, run.counts[i]);
        }
        noteCounts(fewest, greatest);
        primitives.add(run.primitive, run.faces);
        vertices.add(run.vertex, run.corners);
    }
    void add(const Tally &following)
    {
        if (following.primitives.count > 0)
            noteCounts(following.least, following.most);
        primitives.add(following.primitives);
        vertices.add(following.vertices);
        open.concat(following.open);
    }

private:
    void noteCounts(int64_t fewest, int64_t greatest)
    {
        least = primitives.count > 0 ? std::min(least, fewest) : fewest;
        most = primitives.count > 0 ? std::max(most, greatest) : greatest;
    }
};

/// The place where offsets are written to, unless they are a run.
class OffsetWriter
{
public:
    explicit OffsetWriter(const Offsets &offsets) : offsets_(offsets)
    {
        if (!offsets.isRun && offsets.isNarrow)
            narrow_.resize(size_t(offsets.count));
        else if (!offsets.isRun)
            wide_.resize(size_t(offsets.count));
    }

    void write(int64_t at, ELM_Offset first, int64_t count)
    {
        if (!narrow_.empty())
            std::iota(narrow_.begin() + at, narrow_.begin() + at + count, int32_t(first));
        else if (!wide_.empty())
            std::iota(wide_.begin() + at, wide_.begin() + at + count, first);
    }

    RQ_MSHOffsetList finish()
    {
        if (offsets_.isRun)
            return RQ_MSHOffsetList(ELM_OffsetList(offsets_.first, offsets_.count));
        return RQ_MSHOffsetList(offsets_.isNarrow ? ELM_OffsetList(std::move(narrow_)) : ELM_OffsetList(std::move(wide_)));
    }

private:
    Offsets offsets_;
    ELM_OffsetList::Values<int32_t> narrow_;
    ELM_OffsetList::Values<int64_t> wide_;
};
}  // namespace

void rq::FaceLists::gather(const MSH_Detail &detail, const ELM_Range &range, RQ_MSHOffsetList &open, BAS_Progress &progress)
{
    const PolygonReader reader(detail);
    const PieceWalk walk(detail, range, kPrimitivesPerPiece);
    std::vector<Tally> tallies(size_t(walk.pieces()));
    walk.run(progress, [&](int64_t piece, const ELM_Range &part) {
        Tally &tally = tallies[size_t(piece)];
        reader.visit(
            part, [&](const rq::FaceRun &run) { tally.add(run); },
            [&](ELM_Offset primitive) { tally.open.append(primitive); });
    });
    Tally all;
    std::vector<std::pair<int64_t, int64_t>> before;  // faces and vertices before each piece
    for (const Tally &tally : tallies)
    {
        before.emplace_back(all.primitives.count, all.vertices.count);
        all.add(tally);
    }

    FaceLists gathered;
    gathered.noteCounts(all.primitives.count, all.least, all.most);
    if (gathered.counts_)
        gathered.counts_->resize(all.primitives.count);
    OffsetWriter primitives(all.primitives), vertices(all.vertices);
    if (!all.primitives.isRun || !all.vertices.isRun || gathered.counts_)
        walk.run(progress, [&](int64_t piece, const ELM_Range &part) {
            auto [face, corner] = before[size_t(piece)];
            const auto write = [&](const rq::FaceRun &run) {
                primitives.write(face, run.primitive, run.faces);
                vertices.write(corner, run.vertex, run.corners);
                if (gathered.counts_ && run.isUniform)
                    std::fill_n(gathered.counts_->data() + face, run.faces, *run.counts);
                else if (gathered.counts_)
                    std::copy_n(run.counts, run.faces, gathered.counts_->data() + face);
                face += run.faces;
                corner += run.corners;
            };
            reader.visit(part, write, [](ELM_Offset) {});
        });
    if (progress.isInterrupted())
        return;
    gathered.primitives_.append(primitives.finish());
    gathered.vertices_.append(vertices.finish());
    append(gathered);
    open.concat(all.open);
}

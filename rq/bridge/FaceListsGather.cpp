#include <algorithm>
#include <numeric>

#include <host/bas/Parallel.h>
#include <host/msh/Detail.h>
#include <rq/bridge/detail/FaceLists.h>
#include <rq/bridge/detail/parallelWalk.h>

namespace
{
// A polygon costs 0 to 10 ns in each pass, so a piece is up to 80 us of work.  Pieces are whole pages.
constexpr int64_t kPrimitivesPerPiece = 8 * ELM_PAGE_SIZE;

/// Finds the polygons of a detail, runs of them where it can.
class PolygonReader
{
public:
    PolygonReader(const MSH_Detail &detail, const ELM_Group *skip)
        : detail_(detail), columns_(detail.data()), types_(columns_.type.reader()), flags_(columns_.flags.reader()),
          counts_(columns_.vertexCount.reader()), skip_(skip), complete_(detail.topologyIsValid())
    {}

    /// Call `faces(primitive, count, vertex, corners)` for the closed polygons of a range in order, in runs of consecutive
    /// primitives, equal counts and consecutive vertices, and `open(primitive)` for the open ones.
    template <class Faces, class Open> void visit(const ELM_Range &range, Faces &&faces, Open &&open) const
    {
        columns_.vertexStart.visit([&](const auto &column) {
            const auto starts = column.reader();
            for (const auto [begin, end] : range.blocks())
                if (isUniform(begin))
                    visitUniform(starts, begin, end, faces);
                else
                    visitBlock(starts, begin, end, faces, open);
        });
    }

private:
    // True when what holds for this primitive holds for its page.
    bool isUniform(ELM_Offset primitive) const
    {
        const int64_t page = primitive >> ELM_PAGE_BITS;
        return !skip_ && complete_ && columns_.type.isConstantPage(page) &&
               (types_.value(primitive) != ELM_PRIMITIVE_POLYGON ||
                (columns_.flags.isConstantPage(page) && isClosed(primitive) && columns_.vertexCount.isConstantPage(page) &&
                 detail_.sequentialVertices()));
    }

    template <class Starts, class Faces>
    void visitUniform(const Starts &starts, ELM_Offset begin, ELM_Offset end, Faces &faces) const
    {
        if (types_.value(begin) == ELM_PRIMITIVE_POLYGON)
            faces(begin, end - begin, int64_t(starts.value(begin)), int64_t(counts_.value(begin)));
    }

    template <class Starts, class Faces, class Open>
    void visitBlock(const Starts &starts, ELM_Offset begin, ELM_Offset end, Faces &faces, Open &open) const
    {
        for (ELM_Offset primitive = begin; primitive < end;)
        {
            const ELM_Offset first = primitive++;
            const int64_t start = int64_t(starts.value(first)), corners = int64_t(counts_.value(first));
            if (!isWanted(first, start, corners))
                continue;
            if (!isClosed(first))
            {
                open(first);
                continue;
            }
            const auto continues = [&](ELM_Offset next) {
                const int64_t expected = start + (next - first) * corners;
                return counts_.value(next) == corners && int64_t(starts.value(next)) == expected && isClosed(next) &&
                       isWanted(next, expected, corners);
            };
            while (primitive < end && continues(primitive))
                ++primitive;
            faces(first, primitive - first, start, corners);
        }
    }

    bool isClosed(ELM_Offset primitive) const { return flags_.value(primitive) & MSH_DetailData::kClosed; }

    bool isWanted(ELM_Offset primitive, ELM_Offset start, int64_t corners) const
    {
        if (types_.value(primitive) != ELM_PRIMITIVE_POLYGON || (skip_ && skip_->contains(primitive)))
            return false;
        for (int64_t i = 0; !complete_ && i < corners; ++i)
            if (detail_.vertexPoint(start + i) < 0)
                return false;
        return true;
    }

    const MSH_Detail &detail_;
    const MSH_DetailData &columns_;
    ELM_ReadHandle<int16_t> types_;
    ELM_ReadHandle<uint8_t> flags_;
    ELM_ReadHandle<int32_t> counts_;
    const ELM_Group *skip_;
    bool complete_;
};

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

    void add(ELM_Offset primitive, int64_t faces, ELM_Offset vertex, int64_t corners)
    {
        noteCounts(corners, corners);
        primitives.add(primitive, faces);
        vertices.add(vertex, faces * corners);
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

void rq::FaceLists::gather(const MSH_Detail &detail, const ELM_Range &range, const ELM_Group *skip, RQ_MSHOffsetList &open,
                           BAS_Progress &progress)
{
    const PolygonReader reader(detail, skip);
    const PieceWalk walk(detail, range, kPrimitivesPerPiece);
    std::vector<Tally> tallies(size_t(walk.pieces()));
    walk.run(progress, [&](int64_t piece, const ELM_Range &part) {
        Tally &tally = tallies[size_t(piece)];
        reader.visit(
            part, [&](auto... run) { tally.add(run...); }, [&](ELM_Offset primitive) { tally.open.append(primitive); });
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
            const auto write = [&](ELM_Offset primitive, int64_t faces, ELM_Offset vertex, int64_t corners) {
                primitives.write(face, primitive, faces);
                vertices.write(corner, vertex, faces * corners);
                if (gathered.counts_)
                    std::fill_n(gathered.counts_->data() + face, faces, int32_t(corners));
                face += faces;
                corner += faces * corners;
            };
            reader.visit(part, write, [](ELM_Offset) {});
        });
    if (progress.isInterrupted())
        return;
    gathered.primitives_ = primitives.finish();
    gathered.vertices_ = vertices.finish();
    append(gathered);
    open.concat(all.open);
}

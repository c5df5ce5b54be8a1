#include <rq/surface/detail/convexing.h>

#include <algorithm>

#include <host/bas/LargeBlocks.h>
#include <host/bas/Parallel.h>
#include <host/bas/quadSplits.h>
#include <rq/data/DANumeric.h>
#include <rq/surface/Convexer.h>
#include <rq/surface/detail/topology.h>

namespace
{
// Faces between two polls of the interrupt: what is noted of them stays in the first cache.
constexpr int64_t kFacesPerBlock = 512;

template <class T> using Row = std::vector<T, BAS_BlockAllocator<T>>;

/// What one job collects.
template <class Index> struct Pieces
{
    Row<int32_t> counts;
    Row<Index> sourceVertex;
    Row<Index> sourceFace;
    Row<uint8_t> whole;
    int64_t forced = 0;
    bool stopped = false;

    void add(int64_t face, const int64_t *corners, int64_t count, bool isWhole)
    {
        Index *const to = addPiece(face, count, isWhole);
        for (int64_t i = 0; i < count; ++i)
            to[i] = Index(corners[i]);
    }

    void addFace(int64_t face, int64_t corners, const RQ_Convexer &convexer)
    {
        const bool isWhole = convexer.getFaceCount() == 1 && convexer.getVertexCount() == corners;
        for (int64_t piece = 0; piece < convexer.getFaceCount(); ++piece)
            add(face, convexer.getVertexList(piece), convexer.getVertexCount(piece), isWhole);
        forced += convexer.getForcedCount();
    }

    void keepFace(int64_t face, int64_t first, int64_t corners)
    {
        Index *const to = addPiece(face, corners, true);
        for (int64_t i = 0; i < corners; ++i)
            to[i] = Index(first + i);
    }

private:
    /// The place of its corners.
    Index *addPiece(int64_t face, int64_t corners, bool isWhole)
    {
        counts.push_back(int32_t(corners));
        sourceFace.push_back(Index(face));
        whole.push_back(isWhole);
        sourceVertex.resize(sourceVertex.size() + size_t(corners));
        return sourceVertex.data() + sourceVertex.size() - corners;
    }
};

/// Cuts the faces of one job, block by block.
template <class Topology> class PieceCollector
{
public:
    using Index = typename Topology::Index;

    PieceCollector(const rq::ConvexTask &task, const Topology &topology)
        : task_(task), topology_(topology), flat_(task.positions.flat())
    {
        convexer_.setSource(task.positions, task.vertexList);
    }

    Pieces<Index> collect(int64_t begin, int64_t end)
    {
        reserve(begin, end);
        for (int64_t face = begin; face < end; face += kFacesPerBlock)
        {
            pieces_.stopped = task_.progress.interrupted(double(face - begin) / double(end - begin));
            if (pieces_.stopped)
                break;
            addFaces(face, std::min(face + kFacesPerBlock, end));
        }
        return std::move(pieces_);
    }

private:
    /// Enough while quads stay whole: what has more corners may fall into triangles.
    void reserve(int64_t begin, int64_t end)
    {
        size_t pieces = 0, corners = 0;
        for (int64_t face = begin; face < end; ++face)
        {
            const size_t count = size_t(topology_.end(face) - topology_.begin(face));
            pieces += count > 4 ? count - 2 : 1;
            corners += count > 4 ? 3 * (count - 2) : count;
        }
        pieces_.counts.reserve(pieces);
        pieces_.sourceFace.reserve(pieces);
        pieces_.whole.reserve(pieces);
        pieces_.sourceVertex.reserve(corners);
    }

    void addFaces(int64_t begin, int64_t end)
    {
        if (task_.limit > 3 && flat_)
            lookAtQuads(begin, end);
        const uint8_t *isConvex = convexQuads_;
        for (int64_t face = begin; face < end; ++face)
        {
            const int64_t first = topology_.begin(face), corners = topology_.end(face) - first;
            const bool isConvexQuad = task_.limit > 3 && flat_ && corners == 4 && *isConvex++;
            if (isConvexQuad || corners == 3 || (task_.subset && !task_.subset->contains(face)))
                pieces_.keepFace(face, first, corners);
            else if (convexer_.processFace(corners, first, task_.limit, task_.triangulate))
                pieces_.addFace(face, corners, convexer_);
        }
    }

    void lookAtQuads(int64_t begin, int64_t end)
    {
        int64_t quads = 0;
        for (int64_t face = begin; face < end; ++face)
        {
            const int64_t first = topology_.begin(face);
            firsts_[quads] = first;
            quads += topology_.end(face) - first == 4;
        }
        host::convexQuads(flat_, topology_.points, firsts_, quads, convexQuads_);
    }

    const rq::ConvexTask &task_;
    const Topology &topology_;
    const float *const flat_;
    RQ_Convexer convexer_;
    Pieces<Index> pieces_;

    // Of the block.
    int64_t firsts_[kFacesPerBlock + 1];  // corner of each quad
    uint8_t convexQuads_[kFacesPerBlock];
};

/// Join one member of all jobs into one array, in job order; `value(x)` turns a collected value into an entry.
template <class T, class Index, class Member, class Value>
RQ_DataArrayHandle join(const std::vector<Pieces<Index>> &jobs, Member member, Value &&value)
{
    std::vector<int64_t> starts(jobs.size() + 1, 0);
    for (size_t job = 0; job < jobs.size(); ++job)
        starts[job + 1] = starts[job] + int64_t((jobs[job].*member).size());
    auto *array = new RQ_DANumeric<T>(starts.back(), 1, RQ_TYPE_NONE);
    const RQ_DataArrayHandle handle(array);
    host::parallelFor(int64_t(jobs.size()), 1, [&](int64_t job) {
        const auto &values = jobs[size_t(job)].*member;
        std::transform(values.begin(), values.end(), array->data() + starts[size_t(job)], value);
    });
    return handle;
}

template <class T> RQ_DataArrayHandle joinAs(const auto &jobs, auto member)
{
    return join<T>(jobs, member, [](T value) { return value; });
}

template <class Topology> bool cut(const rq::ConvexTask &task, const Topology &topology, RQ_ConvexArrays &arrays)
{
    using Index = typename Topology::Index;
    using JobPieces = Pieces<Index>;
    const int64_t jobs = task.jobs();
    std::vector<JobPieces> pieces(static_cast<size_t>(jobs));
    host::parallelFor(jobs, 1, [&](int64_t job) {
        PieceCollector<Topology> collector(task, topology);
        pieces[size_t(job)] = collector.collect(task.firstFace(job, jobs), task.firstFace(job + 1, jobs));
    });
    if (std::any_of(pieces.begin(), pieces.end(), [](const JobPieces &part) { return part.stopped; }))
        return false;

    for (const JobPieces &part : pieces)
        arrays.forcedCount += part.forced;
    arrays.vertexList =
        join<Index>(pieces, &JobPieces::sourceVertex, [&topology](Index vertex) { return topology.points[vertex]; });
    if (task.wanted.sourceVertex)
        arrays.sourceVertex = joinAs<Index>(pieces, &JobPieces::sourceVertex);
    if (task.wanted.sourceFace)
        arrays.sourceFace = joinAs<Index>(pieces, &JobPieces::sourceFace);
    if (task.wanted.whole)
        arrays.whole = joinAs<uint8_t>(pieces, &JobPieces::whole);
    arrays.counts = joinAs<int32_t>(pieces, &JobPieces::counts);
    return true;
}
}  // namespace

bool rq::convexToPieces(const ConvexTask &task, RQ_ConvexArrays &arrays)
{
    bool done = false;
    // Sources are corners and faces of the mesh, which fit the topology's index.
    visitTopology(task.counts, *task.vertexList, [&](const auto &topology) { done = cut(task, topology, arrays); });
    return done;
}

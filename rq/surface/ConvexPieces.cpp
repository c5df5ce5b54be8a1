#include <rq/surface/detail/convexing.h>

#include <algorithm>
#include <limits>

#include <host/bas/Parallel.h>
#include <rq/data/Counts.h>
#include <rq/data/DANumeric.h>
#include <rq/data/Values.h>
#include <rq/surface/Convexer.h>

namespace
{
constexpr int64_t kFacesPerPoll = 1024;

/// What one job collects: 64-bit positions in the vertex list, narrowed when the jobs are joined.
struct Pieces
{
    std::vector<int32_t> counts;
    std::vector<int64_t> sourceVertex;
    std::vector<int64_t> sourceFace;
    std::vector<uint8_t> whole;
    int64_t forced = 0;
    bool stopped = false;

    void addFace(int64_t face, int64_t corners, const RQ_Convexer &convexer)
    {
        const bool taken = convexer.getFaceCount() == 1 && convexer.getVertexCount() == corners;
        for (int64_t piece = 0; piece < convexer.getFaceCount(); ++piece)
        {
            const int64_t *list = convexer.getVertexList(piece);
            sourceVertex.insert(sourceVertex.end(), list, list + convexer.getVertexCount(piece));
            counts.push_back(int32_t(convexer.getVertexCount(piece)));
            sourceFace.push_back(face);
            whole.push_back(taken);
        }
        forced += convexer.getForcedCount();
    }

    void keepFace(int64_t face, int64_t first, int64_t corners)
    {
        for (int64_t corner = 0; corner < corners; ++corner)
            sourceVertex.push_back(first + corner);
        counts.push_back(int32_t(corners));
        sourceFace.push_back(face);
        whole.push_back(1);
    }
};

Pieces collect(const rq::ConvexTask &task, int64_t begin, int64_t end)
{
    Pieces pieces;
    const rq::Counts counts(task.counts);
    RQ_Convexer convexer;
    convexer.setSource(task.positions, task.vertexList);
    for (int64_t face = begin; face < end; ++face)
    {
        if ((face - begin) % kFacesPerPoll == 0 && task.progress.interrupted(double(face - begin) / double(end - begin)))
        {
            pieces.stopped = true;
            break;
        }
        const int64_t first = counts.begin(face), corners = counts.count(face);
        if (task.subset && !task.subset->contains(face))
            pieces.keepFace(face, first, corners);
        else if (convexer.processFace(corners, first, task.limit, task.triangulate))
            pieces.addFace(face, corners, convexer);
    }
    return pieces;
}

/// Join one member of all jobs into one array, in job order; `value(x)` turns a collected value into an entry.
template <class T, class Member, class Value>
RQ_DataArrayHandle join(const std::vector<Pieces> &jobs, Member member, Value &&value)
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

template <class T> void joinAll(const rq::ConvexTask &task, const std::vector<Pieces> &jobs, RQ_ConvexArrays &arrays)
{
    const auto narrow = [](int64_t value) { return T(value); };
    const rq::Values<T> points(*task.vertexList);
    arrays.vertexList = join<T>(jobs, &Pieces::sourceVertex, [&points](int64_t vertex) { return points[vertex]; });
    if (task.wanted.sourceVertex)
        arrays.sourceVertex = join<T>(jobs, &Pieces::sourceVertex, narrow);
    if (task.wanted.sourceFace)
        arrays.sourceFace = join<T>(jobs, &Pieces::sourceFace, narrow);
    if (task.wanted.whole)
        arrays.whole = join<uint8_t>(jobs, &Pieces::whole, [](uint8_t value) { return value; });
    arrays.counts = join<int32_t>(jobs, &Pieces::counts, [](int32_t value) { return value; });
}
}  // namespace

bool rq::convexToPieces(const ConvexTask &task, RQ_ConvexArrays &arrays)
{
    const int64_t jobs = task.jobs();
    std::vector<Pieces> pieces(static_cast<size_t>(jobs));
    host::parallelFor(jobs, 1, [&](int64_t job) {
        pieces[size_t(job)] = collect(task, task.firstFace(job, jobs), task.firstFace(job + 1, jobs));
    });
    if (std::any_of(pieces.begin(), pieces.end(), [](const Pieces &part) { return part.stopped; }))
        return false;

    for (const Pieces &part : pieces)
        arrays.forcedCount += part.forced;
    const bool small = task.counts.sumCounts() <= std::numeric_limits<int32_t>::max() / 3;
    if (small && task.vertexList->getStorage() != RQ_STORAGE_INT64)
        joinAll<int32_t>(task, pieces, arrays);
    else
        joinAll<int64_t>(task, pieces, arrays);
    return true;
}

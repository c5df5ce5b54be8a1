#include <rq/surface/detail/convexing.h>

#include <atomic>

#include <host/bas/Parallel.h>
#include <host/bas/SmallPolygon.h>
#include <host/bas/faceGeometry.h>
#include <rq/data/DAConstantValue.h>
#include <rq/data/DANumeric.h>
#include <rq/surface/Convexer.h>
#include <rq/surface/detail/topology.h>

namespace
{
// Faces between two polls of the interrupt.
constexpr int64_t kFacesPerPoll = 1024;

template <class T> T *newValues(int64_t entries, RQ_DataArrayHandle &handle)
{
    auto *array = new RQ_DANumeric<T>(entries, 1, RQ_TYPE_NONE);
    handle = array;
    return array->data();
}

int64_t trianglesOf(int64_t corners) { return corners > 2 ? corners - 2 : 0; }

template <class Topology> int64_t countTriangles(const Topology &topology, int64_t firstFace, int64_t lastFace)
{
    int64_t triangles = 0;
    for (int64_t face = firstFace; face < lastFace; ++face)
        triangles += trianglesOf(topology.end(face) - topology.begin(face));
    return triangles;
}

/// Writes the triangles of one job where they belong; null pointers are arrays that nobody wants.
template <class Topology, class Index> class TriangleWriter
{
public:
    TriangleWriter(const Topology &topology, const rq::Positions &positions, Index *points, Index *sourceVertex,
                   Index *sourceFace, uint8_t *whole, int64_t firstTriangle)
        : topology_(topology), positions_(positions), flat_(positions.flat()), points_(points), sourceVertex_(sourceVertex),
          sourceFace_(sourceFace), whole_(whole), triangle_(firstTriangle)
    {}

    void addFace(int64_t face, RQ_Convexer &convexer)
    {
        const int64_t begin = topology_.begin(face), corners = topology_.end(face) - begin;
        if (corners == 3)
            write(face, begin, 0, 1, 2, true);
        else if (corners == 4)
            addQuad(face, begin);
        else if (corners > 4 && !(corners <= host::SmallPolygon::kMostCorners && addSmall(face, begin, int(corners))))
        {
            convexer.processFace(corners, begin, 3, true);
            const int64_t *cut = convexer.getVertexList(0);
            for (int64_t piece = 0; piece < convexer.getFaceCount(); ++piece, cut += 3)
                write(face, 0, cut[0], cut[1], cut[2], false);
        }
    }

private:
    BAS_Vec3d corner(int64_t i) const
    {
        const int64_t point = topology_.point(i);
        return flat_ ? BAS_Vec3d(flat_[3 * point], flat_[3 * point + 1], flat_[3 * point + 2]) : positions_[point];
    }

    void addQuad(int64_t face, int64_t begin)
    {
        const bool split02 = host::diagonalSplits(corner(begin), corner(begin + 1), corner(begin + 2), corner(begin + 3));
        // Selecting corners keeps the loop free of a branch that a mesh of random quads would mispredict.
        write(face, begin, 0, 1, split02 ? 2 : 3, false);
        write(face, begin, split02 ? 2 : 1, split02 ? 3 : 2, split02 ? 0 : 3, false);
    }

    /// What the convexer does with a face of a few corners, for the most part without it.
    bool addSmall(int64_t face, int64_t begin, int corners)
    {
        // Relative to the first corner, as in the convexer.
        BAS_Vec3d offsets[host::SmallPolygon::kMostCorners], axisX, axisY;
        const BAS_Vec3d first = corner(begin);
        for (int i = 0; i < corners; ++i)
            offsets[i] = corner(begin + i) - first;
        host::faceFrame(host::newellVector(corners, [&](int64_t i) { return offsets[i]; }), axisX, axisY);
        host::SmallPolygon::Triangle triangles[host::SmallPolygon::kMostCorners];
        if (!small_.begin(corners, [&](int i) { return BAS_Vec2d(offsets[i].dot(axisX), offsets[i].dot(axisY)); }) ||
            !small_.cut(triangles))
            return false;
        for (int i = 0; i + 2 < corners; ++i)
            write(face, begin, triangles[i].a, triangles[i].b, triangles[i].c, false);
        return true;
    }

    void write(int64_t face, int64_t begin, int64_t a, int64_t b, int64_t c, bool whole)
    {
        const int64_t at = 3 * triangle_;
        points_[at] = Index(topology_.point(begin + a));
        points_[at + 1] = Index(topology_.point(begin + b));
        points_[at + 2] = Index(topology_.point(begin + c));
        if (sourceVertex_)
        {
            sourceVertex_[at] = Index(begin + a);
            sourceVertex_[at + 1] = Index(begin + b);
            sourceVertex_[at + 2] = Index(begin + c);
        }
        if (sourceFace_)
            sourceFace_[triangle_] = Index(face);
        if (whole_)
            whole_[triangle_] = whole;
        ++triangle_;
    }

    const Topology &topology_;
    const rq::Positions &positions_;
    const float *flat_;
    Index *points_;
    Index *sourceVertex_;
    Index *sourceFace_;
    uint8_t *whole_;
    int64_t triangle_;
    host::SmallPolygon small_;
};

template <class Index, class Topology>
bool cut(const rq::ConvexTask &task, const Topology &topology, RQ_ConvexArrays &arrays)
{
    const int64_t jobs = task.jobs();
    std::vector<int64_t> firstTriangle(size_t(jobs) + 1, 0);
    host::parallelFor(jobs, 1, [&](int64_t job) {
        firstTriangle[size_t(job) + 1] = countTriangles(topology, task.firstFace(job, jobs), task.firstFace(job + 1, jobs));
    });
    for (int64_t job = 0; job < jobs; ++job)
        firstTriangle[size_t(job) + 1] += firstTriangle[size_t(job)];

    const int64_t triangles = firstTriangle.back();
    Index *points = newValues<Index>(3 * triangles, arrays.vertexList);
    Index *sourceVertex = task.wanted.sourceVertex ? newValues<Index>(3 * triangles, arrays.sourceVertex) : nullptr;
    Index *sourceFace = task.wanted.sourceFace ? newValues<Index>(triangles, arrays.sourceFace) : nullptr;
    uint8_t *whole = task.wanted.whole ? newValues<uint8_t>(triangles, arrays.whole) : nullptr;
    arrays.counts = new RQ_DAConstantValue<int32_t>(triangles, 3);
    arrays.minCount = arrays.maxCount = 3;

    std::atomic<bool> stopped{false};
    host::parallelFor(jobs, 1, [&](int64_t job) {
        RQ_Convexer convexer;
        convexer.setSource(task.positions, task.vertexList);
        TriangleWriter<Topology, Index> writer(topology, task.positions, points, sourceVertex, sourceFace, whole,
                                               firstTriangle[size_t(job)]);
        const int64_t begin = task.firstFace(job, jobs), end = task.firstFace(job + 1, jobs);
        for (int64_t face = begin; face < end; ++face)
        {
            if ((face - begin) % kFacesPerPoll == 0 && task.progress.interrupted(double(face - begin) / double(end - begin)))
            {
                stopped = true;
                return;
            }
            writer.addFace(face, convexer);
        }
    });
    return !stopped;
}
}  // namespace

bool rq::convexToTriangles(const ConvexTask &task, RQ_ConvexArrays &arrays)
{
    bool done = false;
    visitTopology(task.counts, *task.vertexList, [&](const auto &topology) {
        // Points and corners fit the topology's index; there are never more triangles than corners.
        done = cut<typename std::remove_cvref_t<decltype(topology)>::Index>(task, topology, arrays);
    });
    return done;
}

#include <rq/surface/detail/convexing.h>

#include <algorithm>
#include <atomic>
#include <vector>

#include <host/bas/Parallel.h>
#include <host/bas/faceGeometry.h>
#include <host/bas/quadSplits.h>
#include <rq/data/DAConstantValue.h>
#include <rq/data/DANumeric.h>
#include <rq/surface/detail/NgonWriter.h>
#include <rq/surface/detail/topology.h>

namespace
{
// Faces between two polls of the interrupt: what is noted of them stays in the first cache.
constexpr int64_t kFacesPerBlock = 512;

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

/// Cuts the faces of one job, block by block, and writes the triangles where they belong.
template <class Topology, class Index> class TriangleWriter
{
public:
    TriangleWriter(const rq::ConvexTask &task, const Topology &topology, const rq::TriangleOutputs<Index> &outputs,
                   int64_t firstTriangle)
        : topology_(topology), positions_(task.positions), flat_(task.positions.flat()), outputs_(outputs),
          triangle_(firstTriangle), ngons_(task, topology, outputs)
    {}

    /// At most `kFacesPerBlock` faces, behind those that came before.
    void addFaces(int64_t begin, int64_t end)
    {
        const int64_t triangles = sortFaces(begin, end);
        cutQuads(outputs_.points + 3 * triangle_,
                 placeFor(outputs_.sourceVertex, 3 * triangle_, 3 * triangles, cornerBuffer_),
                 placeFor(outputs_.sourceFace, triangle_, triangles, faceBuffer_));
        for (int64_t i = 0; i < others_; ++i)
            ngons_.add(other_[i].face, triangle_ + other_[i].triangle);
        if (outputs_.whole)
            markWhole(triangles);
        triangle_ += triangles;
    }

    /// Behind the last faces.  Returns the number of triangles for which no proper cut was left.
    int64_t finish()
    {
        ngons_.finish();
        return ngons_.forcedCount();
    }

private:
    struct Face
    {
        int64_t face;
        int64_t triangle;  // the first one's place in the block
    };

    /// Where some entries of an output go; those that nobody wants have a place all the same.
    static Index *placeFor(Index *output, int64_t first, int64_t count, std::vector<Index> &buffer)
    {
        if (output)
            return output + first;
        if (int64_t(buffer.size()) < count)
            buffer.resize(size_t(count));
        return buffer.data();
    }

    /// Tell quads from all others; returns the number of triangles.
    int64_t sortFaces(int64_t begin, int64_t end)
    {
        int64_t triangles = 0, quads = 0, others = 0;
        for (int64_t face = begin; face < end; ++face)
        {
            const int64_t first = topology_.begin(face), corners = topology_.end(face) - first;
            // Written in any case, and kept or not: a mesh of random faces would mispredict every branch.
            firsts_[quads] = first;
            quad_[quads] = {face, triangles};
            quads += corners == 4;
            other_[others] = {face, triangles};
            others += (corners != 4) & (corners > 2);
            triangles += trianglesOf(corners);
        }
        quads_ = quads;
        others_ = others;
        return triangles;
    }

    void cutQuads(Index *points, Index *corners, Index *faces)
    {
        if (flat_)
            host::splitQuads(flat_, topology_.points, firsts_, quads_, splits_);
        else
            for (int64_t i = 0; i < quads_; ++i)
                splits_[i] = host::diagonalSplits(corner(firsts_[i]), corner(firsts_[i] + 1), corner(firsts_[i] + 2),
                                                  corner(firsts_[i] + 3));
        static constexpr Index kOrders[2][6] = {{0, 1, 3, 1, 2, 3}, {0, 1, 2, 2, 3, 0}};
        for (int64_t i = 0; i < quads_; ++i)
        {
            const int64_t first = firsts_[i], triangle = quad_[i].triangle;
            const auto &order = kOrders[splits_[i]];
            const Index *from = topology_.points + first;
            Index *const corner = corners + 3 * triangle, *const point = points + 3 * triangle;
            for (int k = 0; k < 6; ++k)
                corner[k] = Index(first) + order[k];
            // Chosen, not looked up, so that nothing waits for the order.
            const Index a = from[0], b = from[1], c = from[2], d = from[3];
            const bool is02 = splits_[i];
            point[0] = a;
            point[1] = b;
            point[2] = is02 ? c : d;
            point[3] = is02 ? c : b;
            point[4] = is02 ? d : c;
            point[5] = is02 ? a : d;
            faces[triangle] = faces[triangle + 1] = Index(quad_[i].face);
        }
    }

    void markWhole(int64_t triangles) const
    {
        std::fill_n(outputs_.whole + triangle_, triangles, 0);
        for (int64_t i = 0; i < others_; ++i)
            outputs_.whole[triangle_ + other_[i].triangle] =
                topology_.end(other_[i].face) - topology_.begin(other_[i].face) == 3;
    }

    BAS_Vec3d corner(int64_t i) const
    {
        const int64_t point = topology_.point(i);
        return flat_ ? BAS_Vec3d(flat_[3 * point], flat_[3 * point + 1], flat_[3 * point + 2]) : positions_[point];
    }

    const Topology &topology_;
    const rq::Positions &positions_;
    const float *flat_;
    const rq::TriangleOutputs<Index> &outputs_;
    int64_t triangle_;
    rq::NgonWriter<Topology, Index> ngons_;

    // Of the block.
    std::vector<Index> cornerBuffer_, faceBuffer_;
    int64_t quads_ = 0, others_ = 0;
    int64_t firsts_[kFacesPerBlock + 1];  // corner of each quad
    uint8_t splits_[kFacesPerBlock];
    Face quad_[kFacesPerBlock + 1], other_[kFacesPerBlock + 1];
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
    rq::TriangleOutputs<Index> outputs;
    outputs.points = newValues<Index>(3 * triangles, arrays.vertexList);
    outputs.sourceVertex = task.wanted.sourceVertex ? newValues<Index>(3 * triangles, arrays.sourceVertex) : nullptr;
    outputs.sourceFace = task.wanted.sourceFace ? newValues<Index>(triangles, arrays.sourceFace) : nullptr;
    outputs.whole = task.wanted.whole ? newValues<uint8_t>(triangles, arrays.whole) : nullptr;
    arrays.counts = new RQ_DAConstantValue<int32_t>(triangles, 3);
    arrays.minCount = arrays.maxCount = 3;

    std::atomic<bool> stopped{false};
    std::atomic<int64_t> forced{0};
    host::parallelFor(jobs, 1, [&](int64_t job) {
        TriangleWriter<Topology, Index> writer(task, topology, outputs, firstTriangle[size_t(job)]);
        const int64_t begin = task.firstFace(job, jobs), end = task.firstFace(job + 1, jobs);
        for (int64_t face = begin; face < end; face += kFacesPerBlock)
        {
            if (task.progress.interrupted(double(face - begin) / double(end - begin)))
            {
                stopped = true;
                return;
            }
            writer.addFaces(face, std::min(face + kFacesPerBlock, end));
        }
        forced += writer.finish();
    });
    arrays.forcedCount = forced;
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

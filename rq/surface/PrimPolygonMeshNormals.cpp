#include <rq/surface/PrimPolygonMesh.h>

#include <host/bas/LargeBlocks.h>
#include <host/bas/Parallel.h>
#include <host/bas/normals.h>
#include <rq/data/DAIndirect.h>
#include <rq/data/DANumeric.h>
#include <rq/data/Positions.h>
#include <rq/data/convert.h>
#include <rq/surface/detail/SharedTopology.h>
#include <rq/surface/detail/topology.h>

namespace
{
/// The positions of one segment; not valid when a geometric operation cannot use them.
rq::Positions positionsOf(const RQ_PrimPolygonMesh &mesh, int segment, const char *name)
{
    return rq::Positions(mesh.getShared() && mesh.getVertexList() ? mesh.getShared()->get(name, segment) : nullptr);
}

/// Make an array of `entries` normals: `write(values)` writes them and tells whether it could.
template <class Write> RQ_DataArrayHandle makeNormals(RQ_Storage storage, int64_t entries, Write &&write)
{
    RQ_DataArrayHandle result;
    rq::dispatchStorage(storage, [&](auto tag) {
        using T = typename decltype(tag)::type;
        const BAS_IntrusivePtr<RQ_DANumeric<T>> array(new RQ_DANumeric<T>(entries, 3, RQ_TYPE_NORMAL));
        if (write(array->data()))
            result = array;
    });
    return result;
}

/// Let `write(values)` write `entries` normals as values of a float storage; 16-bit ones are computed in 32 bits and
/// converted.
template <class Write> bool writeAs(RQ_Storage storage, void *normals, int64_t entries, Write &&write)
{
    if (storage == RQ_STORAGE_REAL64)
        write(static_cast<double *>(normals));
    else if (storage == RQ_STORAGE_REAL32)
        write(static_cast<float *>(normals));
    else if (storage == RQ_STORAGE_REAL16)
    {
        constexpr int64_t kSerialValues = 80000, kValuesPerTask = 40000;
        std::vector<float, BAS_BlockAllocator<float>> singles(size_t(3 * entries));
        write(singles.data());
        PLT_Half *halves = static_cast<PLT_Half *>(normals);
        host::parallelForRange(
            3 * entries, 3 * entries > kSerialValues ? kValuesPerTask : kSerialValues, [&](int64_t begin, int64_t end) {
                rq::convertValues(singles.data() + begin, RQ_STORAGE_REAL32, halves + begin, RQ_STORAGE_REAL16, end - begin);
            });
    }
    else
        return false;
    return true;
}

/// Call `visit(topology, position)` with everything resolved to plain readers.
template <class Visit> void visitMesh(const RQ_PrimPolygonMesh &mesh, const rq::Positions &positions, Visit &&visit)
{
    rq::visitTopology(mesh.getFaceCountArray(), *mesh.getVertexList(), [&](const auto &topology) {
        if (positions.flat())
            visit(topology, host::PackedPositions{positions.flat()});
        else
            visit(topology, [&positions](int64_t point) { return positions[point]; });
    });
}

/// Call `visit(kernel)` with the normal kernel of a mesh.
template <class Real, class Visit>
void visitKernel(const RQ_PrimPolygonMesh &mesh, const rq::SharedTopology &shared, const rq::Positions &positions,
                 RQ_NormalWeights weights, const float *given, Visit &&visit)
{
    visitMesh(mesh, positions, [&](const auto &topology, const auto &position) {
        using Topology = std::remove_cvref_t<decltype(topology)>;
        using Position = std::remove_cvref_t<decltype(position)>;
        const auto adjacencyOf = [&] { return rq::SharedTopology::Adjacency(shared, positions.entries(), topology); };
        host::NormalKernel<Real, Topology, Position, decltype(adjacencyOf)> kernel(
            positions.entries(), topology, position, adjacencyOf, host::NormalWeights(weights), given);
        visit(kernel);
    });
}

/// Write the normals of faces [first, last), at most as many as lanes.
template <class Real, class Topology, class Position>
void writeFaceLanes(Real *values, const Topology topology, const Position position, int64_t first, int64_t last)
{
    host::CornerLanes<host::LaneOf<Position>> corners;
    host::VectorLanes normals;
    double lengths[host::VectorLanes::kCount];
    const auto isDoneWith = [&](int64_t known) {
        return host::readCorners(topology, position, first, last, corners, known) && corners.fastNormals(normals, lengths);
    };
    if (!isDoneWith(3) && !isDoneWith(4))
    {
        for (int64_t face = first; face < last; ++face)
        {
            const int64_t begin = topology.begin(face);
            const auto at = [&](int64_t i) { return position(topology.point(begin + i)); };
            normals.set(face - first, host::fastNormalVector(topology.end(face) - begin, at));
        }
        host::normalizeLanes(normals, last - first, lengths);
    }
    host::storeLanes(normals, last - first, values + 3 * first);
}
}  // namespace

bool RQ_PrimPolygonMesh::writeFaceNormals(void *normals, RQ_Storage storage, int segment, const char *positions) const
{
    // A face costs about 5 ns here.
    constexpr int64_t kLanes = host::VectorLanes::kCount, kBlocksPerTask = 64;
    const rq::Positions reader = positionsOf(*this, segment, positions);
    return reader.isValid() && writeAs(storage, normals, getFaceCount(), [&](auto *values) {
               visitMesh(*this, reader, [&](const auto &topology, const auto &position) {
                   host::parallelFor((topology.faces() + kLanes - 1) / kLanes, kBlocksPerTask, [&](int64_t block) {
                       writeFaceLanes(values, topology, position, block * kLanes,
                                      std::min((block + 1) * kLanes, topology.faces()));
                   });
               });
           });
}

bool RQ_PrimPolygonMesh::writePointNormals(void *normals, RQ_Storage storage, int segment, const char *positions,
                                           bool normalize, RQ_NormalWeights weights, const float *given) const
{
    const rq::Positions reader = positionsOf(*this, segment, positions);
    return reader.isValid() && writeAs(storage, normals, reader.entries(), [&]<class Real>(Real *values) {
               visitKernel<Real>(*this, *topology_, reader, weights, given,
                                 [&](auto &kernel) { kernel.pointNormals(normalize, values); });
           });
}

bool RQ_PrimPolygonMesh::writeVertexNormals(void *normals, RQ_Storage storage, int segment, const char *positions,
                                            double cuspAngle, bool normalize, RQ_NormalWeights weights) const
{
    const rq::Positions reader = positionsOf(*this, segment, positions);
    if (!reader.isValid())
        return false;
    return writeAs(storage, normals, getVertexCount(), [&]<class Real>(Real *values) {
        // Faceted and smooth normals are those of faces and points, spread over the vertices.
        std::vector<Real> few;
        if (cuspAngle >= 180.0)
        {
            few.resize(size_t(3 * reader.entries()));
            writePointNormals(few.data(), RQstorageOf<Real>, segment, positions, normalize, weights, nullptr);
        }
        else if (!(cuspAngle > 0.0))
        {
            few.resize(size_t(3 * getFaceCount()));
            writeFaceNormals(few.data(), RQstorageOf<Real>, segment, positions);
        }
        else
            return visitKernel<Real>(*this, *topology_, reader, weights, nullptr, [&](auto &kernel) {
                kernel.cornerNormals(cuspAngle, normalize, host::PackedCorners<Real>{values});
            });
        rq::visitTopology(counts_, *vertexList_, [&](const auto &topology) {
            constexpr int64_t kFacesPerTask = 8192;  // of some 5 ns
            host::parallelFor(topology.faces(), kFacesPerTask, [&](int64_t face) {
                for (int64_t corner = topology.begin(face); corner < topology.end(face); ++corner)
                    std::copy_n(few.data() + 3 * (cuspAngle >= 180.0 ? topology.point(corner) : face), 3,
                                values + 3 * corner);
            });
        });
    });
}

RQ_DataArrayHandle RQ_PrimPolygonMesh::faceNormals(int segment, const char *positions, RQ_Storage storage) const
{
    // Without positions nothing tells that there is room for as many.
    if (!positionsOf(*this, segment, positions).isValid())
        return nullptr;
    return makeNormals(storage, getFaceCount(),
                       [&](auto *values) { return writeFaceNormals(values, storage, segment, positions); });
}

RQ_DataArrayHandle RQ_PrimPolygonMesh::createPointNormals(int segment, const char *positions, bool normalize,
                                                          const float *weights, RQ_Storage storage) const
{
    return makeNormals(storage, positionsOf(*this, segment, positions).entries(), [&](auto *values) {
        return writePointNormals(values, storage, segment, positions, normalize, RQ_NORMAL_WEIGHTS_ANGLE, weights);
    });
}

RQ_DataArrayHandle RQ_PrimPolygonMesh::createVertexNormals(int segment, const char *positions, double cuspAngle,
                                                           bool normalize, RQ_Storage storage) const
{
    // The normals of points and faces need not be spread: the vertices see them through views.
    if (cuspAngle >= 180.0)
    {
        const RQ_DataArrayHandle points = createPointNormals(segment, positions, normalize, nullptr, storage);
        return points ? RQ_DAIndirect::createIndirect(points, vertexList_) : nullptr;
    }
    if (!(cuspAngle > 0.0))
    {
        const RQ_DataArrayHandle faces = faceNormals(segment, positions, storage);
        return faces ? RQ_DAIndirect::createIndirect(faces, counts_.buildRepeatList()) : nullptr;
    }
    if (!positionsOf(*this, segment, positions).isValid())
        return nullptr;
    return makeNormals(storage, getVertexCount(), [&](auto *values) {
        return writeVertexNormals(values, storage, segment, positions, cuspAngle, normalize, RQ_NORMAL_WEIGHTS_ANGLE);
    });
}

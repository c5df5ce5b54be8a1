#include <rq/surface/PrimPolygonMesh.h>

#include <host/bas/Parallel.h>
#include <host/bas/normals.h>
#include <rq/data/DAIndirect.h>
#include <rq/data/DANumeric.h>
#include <rq/data/Positions.h>
#include <rq/surface/detail/topology.h>

namespace
{
/// The positions of one segment; not valid when a geometric operation cannot use them.
rq::Positions positionsOf(const RQ_PrimPolygonMesh &mesh, int segment, const char *name)
{
    return rq::Positions(mesh.getShared() && mesh.getVertexList() ? mesh.getShared()->get(name, segment) : nullptr);
}

template <class T> void store(T *values, int64_t entry, const BAS_Vec3d &normal)
{
    for (int axis = 0; axis < 3; ++axis)
        values[3 * entry + axis] = T(normal[axis]);
}

/// Make an array of `entries` normals: `fill(values)` writes them as T.
template <class T, class Fill> RQ_DataArrayHandle makeAs(int64_t entries, Fill &&fill)
{
    auto *array = new RQ_DANumeric<T>(entries, 3, RQ_TYPE_NORMAL);
    const RQ_DataArrayHandle handle(array);
    fill(array->data());
    return handle;
}

/// The same in the storage asked for; 16-bit normals are computed in 32 bits and converted.
template <class Fill> RQ_DataArrayHandle makeNormals(RQ_Storage storage, int64_t entries, Fill &&fill)
{
    if (storage == RQ_STORAGE_REAL64)
        return makeAs<double>(entries, fill);
    if (storage == RQ_STORAGE_REAL32)
        return makeAs<float>(entries, fill);
    if (storage != RQ_STORAGE_REAL16)
        return nullptr;
    RQ_DataArrayHandle half;
    makeAs<float>(entries, fill)->template getArray<PLT_Half>(half);
    return half;
}

/// Call `visit(topology, position)` with everything resolved to plain readers.
template <class Visit> void visitMesh(const RQ_PrimPolygonMesh &mesh, const rq::Positions &positions, Visit &&visit)
{
    rq::visitTopology(mesh.getFaceCountArray(), *mesh.getVertexList(), [&](const auto &topology) {
        positions.visit(
            [&](const auto &reader) { visit(topology, [&reader](int64_t point) { return BAS_Vec3d(reader(point)); }); });
    });
}

/// Call `visit(kernel)` with the normal kernel of the mesh.
template <class Visit>
void visitKernel(const RQ_PrimPolygonMesh &mesh, const rq::Positions &positions, const float *weights, Visit &&visit)
{
    visitMesh(mesh, positions, [&](const auto &topology, const auto &position) {
        using Topology = std::remove_cvref_t<decltype(topology)>;
        using Position = std::remove_cvref_t<decltype(position)>;
        visit(host::NormalKernel<typename Topology::Index, Topology, Position>(topology, position, positions.entries(),
                                                                               mesh.getVertexCount(), weights));
    });
}

const RQ_DataArrayHandle &existingNormals(const RQ_PrimPolygonMesh &mesh)
{
    static const RQ_DataArrayHandle kNone;
    for (const RQ_AttributeListHandle *list : {&mesh.getVertex(), &mesh.getShared()})
        if (*list && (*list)->get("N", 0))
            return (*list)->get("N", 0);
    return kNone;
}

/// `list` with the array of every motion segment under "N"; `make(segment)` builds one, null where it cannot.
template <class Make> RQ_AttributeListHandle withNormals(const RQ_AttributeListHandle &list, int segments, Make &&make)
{
    std::vector<RQ_DataArrayHandle> normals;
    for (int segment = 0; segment < segments; ++segment)
        normals.push_back(make(segment));
    if (!normals.front())
        return nullptr;
    const RQ_AttributeListHandle base = list ? list : RQ_AttributeListHandle(new RQ_AttributeList(new RQ_AttributeMap, 1));
    return base->addAttribute("N", normals.data(), segments, true);
}
}  // namespace

RQ_DataArrayHandle RQ_PrimPolygonMesh::faceNormals(int segment, const char *positions, RQ_Storage storage) const
{
    // A face costs about 10 ns here.
    constexpr int64_t kFacesPerTask = 4096;
    const rq::Positions reader = positionsOf(*this, segment, positions);
    if (!reader.isValid())
        return nullptr;
    return makeNormals(storage, getFaceCount(), [&](auto *values) {
        visitMesh(*this, reader, [&](const auto &topology, const auto &position) {
            host::parallelFor(topology.faces(), kFacesPerTask, [&](int64_t face) {
                const int64_t begin = topology.begin(face);
                store(values, face, host::fastNormal(topology.end(face) - begin, [&](int64_t i) {
                          return position(topology.point(begin + i));
                      }));
            });
        });
    });
}

RQ_DataArrayHandle RQ_PrimPolygonMesh::createPointNormals(int segment, const char *positions, bool normalize,
                                                          const float *weights, RQ_Storage storage) const
{
    const rq::Positions reader = positionsOf(*this, segment, positions);
    if (!reader.isValid())
        return nullptr;
    return makeNormals(storage, reader.entries(), [&](auto *values) {
        visitKernel(*this, reader, weights, [&](const auto &kernel) {
            kernel.pointNormals(reader.entries(), normalize,
                                [values](int64_t point, const BAS_Vec3d &normal) { store(values, point, normal); });
        });
    });
}

RQ_DataArrayHandle RQ_PrimPolygonMesh::createVertexNormals(int segment, const char *positions, double cuspAngle,
                                                           bool normalize, RQ_Storage storage) const
{
    const rq::Positions reader = positionsOf(*this, segment, positions);
    if (!reader.isValid())
        return nullptr;
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
    return makeNormals(storage, getVertexCount(), [&](auto *values) {
        visitKernel(*this, reader, nullptr, [&](const auto &kernel) {
            kernel.cornerNormals(reader.entries(), cuspAngle, normalize,
                                 [values](int64_t corner, const BAS_Vec3d &normal) { store(values, corner, normal); });
        });
    });
}

RQ_PolygonMeshHandle RQ_PrimPolygonMesh::createPointNormalsIfMissing(const char *positions, bool normalize,
                                                                     bool &changed) const
{
    changed = false;
    if (existingNormals(*this))
        return const_cast<RQ_PrimPolygonMesh *>(this);
    const RQ_AttributeListHandle shared = withNormals(shared_, getMotionSegments(), [&](int segment) {
        return createPointNormals(segment, positions, normalize, nullptr, RQ_STORAGE_REAL32);
    });
    if (!shared)
        return const_cast<RQ_PrimPolygonMesh *>(this);
    changed = true;
    return clone(shared, vertex_, uniform_, detail_);
}

RQ_PolygonMeshHandle RQ_PrimPolygonMesh::createVertexNormalsIfMissing(const char *positions, double cuspAngle,
                                                                      bool normalize, bool &changed) const
{
    changed = false;
    if (existingNormals(*this))
        return const_cast<RQ_PrimPolygonMesh *>(this);
    const RQ_AttributeListHandle vertex = withNormals(vertex_, getMotionSegments(), [&](int segment) {
        return createVertexNormals(segment, positions, cuspAngle, normalize, RQ_STORAGE_REAL32);
    });
    if (!vertex)
        return const_cast<RQ_PrimPolygonMesh *>(this);
    changed = true;
    return clone(shared_, vertex, uniform_, detail_);
}

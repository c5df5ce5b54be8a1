#include <host/mod/normals.h>

#include <host/bas/normals.h>
#include <host/mod/detail/NormalTables.h>

namespace
{
// A corner costs a few nanoseconds to write.
constexpr int64_t kVerticesPerTask = 8192;

void store(float *to, const BAS_Vec3f &normal)
{
    to[0] = normal.x;
    to[1] = normal.y;
    to[2] = normal.z;
}

// A vertex that several faces share gets the direction of the sum of its corners' normals.
template <class Kernel, class Faces>
void writeSharedVertices(Kernel &kernel, const Faces &faces, const MSH_Detail &detail, double cuspAngle, float *to)
{
    std::vector<BAS_Vec3f> normals(size_t(faces.corners()));
    kernel.cornerNormals(cuspAngle, true, [&](int64_t corner) { return &normals[size_t(corner)].x; });
    std::vector<BAS_Vec3d> sums(size_t(detail.capacity(ELM_OWNER_VERTEX)), BAS_Vec3d(0.0));
    std::vector<uint8_t> isShared(sums.size()), isSeen(sums.size());
    for (int64_t corner = 0; corner < faces.corners(); ++corner)
    {
        const size_t vertex = size_t(faces.vertex(corner));
        sums[vertex] += BAS_Vec3d(normals[size_t(corner)]);
        isShared[vertex] |= isSeen[vertex];
        isSeen[vertex] = 1;
    }
    host::parallelFor(int64_t(sums.size()), kVerticesPerTask,
                      [&](int64_t vertex) { store(to + 3 * vertex, BAS_Vec3f(host::direction(sums[size_t(vertex)]))); });
}

bool sharesVertices(const MSH_Detail &detail)
{
    constexpr ELM_PrimitiveTypeId kManyFaced[] = {ELM_PRIMITIVE_TRIANGLE_FAN, ELM_PRIMITIVE_TRIANGLE_STRIP,
                                                  ELM_PRIMITIVE_SOUP, ELM_PRIMITIVE_GRID};
    return std::any_of(std::begin(kManyFaced), std::end(kManyFaced),
                       [&detail](ELM_PrimitiveTypeId type) { return detail.primitiveCount(type) > 0; });
}

/// Positions as the kernel reads them fastest: 32-bit ones side by side, in the detail's own memory where they are; others
/// as 64-bit ones.
class PlainPositions
{
public:
    explicit PlainPositions(const MSH_Detail &detail)
    {
        const ELM_Attribute &positions = detail.positions();
        const int64_t points = detail.capacity(ELM_OWNER_POINT);
        packed_.values = positions.tupleSize() == 3 ? positions.contiguousData<float>() : nullptr;
        if (packed_.values)
            return;
        wide_.resize(size_t(points));
        positions.numericTuple()->visit([&](const auto &pages) {
            const auto reader = pages.reader();
            const int components = std::min(int(positions.tupleSize()), 3);
            host::parallelFor(points, kVerticesPerTask, [&](int64_t point) {
                BAS_Vec3d at(0.0);
                for (int i = 0; i < components; ++i)
                    at[i] = double(reader.tuple(point)[i]);
                wide_[size_t(point)] = at;
            });
        });
    }

    /// Call `visit(position)` with the reader of positions.
    template <class Visit> void visit(Visit &&visit) const
    {
        if (packed_.values)
            visit(packed_);
        else
            visit([values = wide_.data()](int64_t point) { return values[point]; });
    }

private:
    host::PackedPositions packed_;
    std::vector<BAS_Vec3d, BAS_BlockAllocator<BAS_Vec3d>> wide_;
};

template <class Table, class Position>
void computeInto(float *to, const MSH_Detail &detail, const Table &table, ELM_Owner owner, double cuspAngle,
                 const Position &position)
{
    const auto &faces = table.faces();
    const auto adjacencyOf = [&table] { return &table.adjacency(); };
    host::NormalKernel<float, typename Table::Topology, Position, decltype(adjacencyOf)> kernel(
        table.points(), faces.topology(), position, adjacencyOf, host::NormalWeights::angle);
    if (owner == ELM_OWNER_POINT)
        kernel.pointNormals(true, to);
    else if (sharesVertices(detail))
        writeSharedVertices(kernel, faces, detail, cuspAngle, to);
    else
        kernel.cornerNormals(cuspAngle, true, [&](int64_t corner) { return to + 3 * faces.vertex(corner); });
}
}  // namespace

ELM_AttributeHandle MODcomputeNormals(const MSH_Detail &detail, ELM_Owner owner, double cuspAngle)
{
    const MOD_NormalFaces::Handle faces = MOD_NormalFaces::create(detail);
    return faces ? MODcomputeNormals(detail, *faces, owner, cuspAngle) : nullptr;
}

ELM_AttributeHandle MODcomputeNormals(const MSH_Detail &detail, const MOD_NormalFaces &faces, ELM_Owner owner,
                                      double cuspAngle)
try
{
    if ((owner != ELM_OWNER_POINT && owner != ELM_OWNER_VERTEX) || faces.topologyId() != detail.topologyId())
        return nullptr;
    const ELM_AttributeHandle normals =
        ELM_Attribute::createDetached(owner, ELM_STORAGE_REAL32, 3, ELM_TYPE_NORMAL, detail.capacity(owner));
    if (normals->size() == 0)
        return normals;
    float *to = normals->modifyAll<float>();
    const PlainPositions positions(detail);
    faces.tables().visit([&](const auto &table) {
        positions.visit([&](const auto &position) { computeInto(to, detail, table, owner, cuspAngle, position); });
    });
    return normals;
}
catch (const std::bad_alloc &)
{
    return nullptr;
}

#include <host/mod/normals.h>

#include <host/bas/normals.h>
#include <host/mod/detail/FaceTable.h>

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

template <class Index, class Position>
void computeInto(float *to, const MSH_Detail &detail, const host::FaceCounts &counts, ELM_Owner owner, double cuspAngle,
                 const Position &position)
{
    using Faces = host::FaceTable<Index>;
    const Faces faces(detail, counts);
    const typename Faces::Topology topology = faces.topology();
    const int64_t points = detail.capacity(ELM_OWNER_POINT);
    const auto adjacencyOf = [&] { return std::make_unique<host::CornerAdjacency<Index>>(points, topology); };
    host::NormalKernel<float, typename Faces::Topology, Position, decltype(adjacencyOf)> kernel(
        points, topology, position, adjacencyOf, host::NormalWeights::angle);
    if (owner == ELM_OWNER_POINT)
        kernel.pointNormals(true, [to](int64_t point, const BAS_Vec3f &normal) { store(to + 3 * point, normal); });
    else if (sharesVertices(detail))
        writeSharedVertices(kernel, faces, detail, cuspAngle, to);
    else
        kernel.cornerNormals(cuspAngle, true, [&](int64_t corner) { return to + 3 * faces.vertex(corner); });
}
}  // namespace

ELM_AttributeHandle MODcomputeNormals(const MSH_Detail &detail, ELM_Owner owner, double cuspAngle)
try
{
    if (owner != ELM_OWNER_POINT && owner != ELM_OWNER_VERTEX)
        return nullptr;
    const ELM_AttributeHandle normals =
        ELM_Attribute::createDetached(owner, ELM_STORAGE_REAL32, 3, ELM_TYPE_NORMAL, detail.capacity(owner));
    if (normals->size() == 0)
        return normals;
    float *to = normals->modifyAll<float>();
    const host::FaceCounts counts(detail);
    const bool isNarrow = std::max({counts.beforePage.back().corners, detail.capacity(ELM_OWNER_VERTEX),
                                    detail.capacity(ELM_OWNER_POINT)}) < ELM_INDEX32_LIMIT;
    detail.positions().numericTuple()->visit([&](const auto &pages) {
        const auto position = [reader = pages.reader()](int64_t point) {
            const auto *p = reader.tuple(point);
            return BAS_Vec3d(double(p[0]), double(p[1]), double(p[2]));
        };
        if (isNarrow)
            computeInto<int32_t>(to, detail, counts, owner, cuspAngle, position);
        else
            computeInto<int64_t>(to, detail, counts, owner, cuspAngle, position);
    });
    return normals;
}
catch (const std::bad_alloc &)
{
    return nullptr;
}

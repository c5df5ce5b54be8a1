#include <rq/surface/PrimPolygonMesh.h>

#include <algorithm>
#include <cmath>

#include <host/bas/Parallel.h>
#include <host/bas/faceGeometry.h>
#include <rq/data/DANumeric.h>
#include <rq/data/Positions.h>
#include <rq/data/Values.h>
#include <rq/surface/detail/SharedTopology.h>
#include <rq/surface/detail/topology.h>

namespace
{
using Numbers = BAS_IntrusivePtr<RQ_DANumeric<float>>;

/// An attribute of corners or, where they lack it, of their points.
class CornerValues
{
public:
    CornerValues() = default;
    CornerValues(const RQ_DataArrayHandle &array, int64_t rows, bool ofPoints) : ofPoints_(ofPoints)
    {
        if (array && RQisNumeric(array->getStorage()) && array->entries() >= rows)
            values_ = rq::Values<float>(array);
    }
    CornerValues(const RQ_PrimPolygonMesh &mesh, const char *name, int segment)
    {
        if (mesh.getVertex() && mesh.getVertex()->get(name, segment))
            *this = CornerValues(mesh.getVertex()->get(name, segment), mesh.getVertexCount(), false);
        else if (mesh.getShared())
            *this = CornerValues(mesh.getShared()->get(name, segment), mesh.getPointCount(), true);
    }

    bool has(int64_t components) const { return values_.data() && values_.tupleSize() >= components; }
    const float *operator()(int64_t corner, int64_t point) const
    {
        return values_.data() + (ofPoints_ ? point : corner) * values_.tupleSize();
    }

private:
    rq::Values<float> values_;
    bool ofPoints_ = false;
};

/// What a face's texture says at one of its corners: the way that u grows, in the plane of the corner's normal, as long as
/// the corner's angle; and whether the texture is mirrored there.
struct Gradient
{
    BAS_Vec3f along{0.0f};
    bool isMirrored = false;
};

struct Texture
{
    CornerValues uv;
    CornerValues normals;

    BAS_Vec3d normal(int64_t corner, int64_t point) const
    {
        const float *n = normals(corner, point);
        return host::direction(BAS_Vec3d(n[0], n[1], n[2]));
    }

    bool areAlike(int64_t cornerA, int64_t cornerB, int64_t point) const
    {
        return std::equal(uv(cornerA, point), uv(cornerA, point) + 2, uv(cornerB, point)) &&
               std::equal(normals(cornerA, point), normals(cornerA, point) + 3, normals(cornerB, point));
    }
};

template <class Topology, class Position>
Gradient gradientAt(const Texture &texture, const Topology &topology, const Position &position, int64_t face, int64_t corner)
{
    const int64_t begin = topology.begin(face), end = topology.end(face);
    const int64_t next = corner + 1 < end ? corner + 1 : begin, last = corner > begin ? corner - 1 : end - 1;
    const int64_t point = topology.point(corner);
    const BAS_Vec3d origin = position(point), forward = position(topology.point(next)) - origin,
                    back = position(topology.point(last)) - origin;
    const float *at = texture.uv(corner, point), *ahead = texture.uv(next, topology.point(next)),
                *behind = texture.uv(last, topology.point(last));
    const double forwardU = double(ahead[0]) - at[0], forwardV = double(ahead[1]) - at[1];
    const double backU = double(behind[0]) - at[0], backV = double(behind[1]) - at[1];
    const double turn = forwardU * backV - forwardV * backU;
    const BAS_Vec3d normal = texture.normal(corner, point), across = forward % back;

    Gradient gradient;
    // A reflex corner turns the other way on the face and in the texture.
    gradient.isMirrored = (turn < 0.0) != (across.dot(normal) < 0.0);
    const BAS_Vec3d grows = (forward * backV - back * forwardV) * (turn < 0.0 ? -1.0 : 1.0);
    const BAS_Vec3d along = host::direction(grows - normal * normal.dot(grows));
    if (turn != 0.0 && std::isfinite(turn))
        gradient.along = BAS_Vec3f(along * host::angleOf(across.length(), forward.dot(back)));
    return gradient;
}

template <class Topology, class Position>
std::vector<Gradient> gradientsOf(const Texture &texture, const Topology &topology, const Position &position)
{
    // A corner costs about 20 ns here.
    constexpr int64_t kFacesPerTask = 1024;
    std::vector<Gradient> gradients(size_t(topology.begin(topology.faces())));
    host::parallelFor(topology.faces(), kFacesPerTask, [&](int64_t face) {
        for (int64_t corner = topology.begin(face); corner < topology.end(face); ++corner)
            gradients[size_t(corner)] = gradientAt(texture, topology, position, face, corner);
    });
    return gradients;
}

/// Sum the gradients of the corners around each point that share texture, normal and mirroring, and write both tangents.
template <class Topology, class Adjacency>
void sumGradients(const Texture &texture, const Topology &topology, const Adjacency &adjacency,
                  const std::vector<Gradient> &gradients, BAS_Vec3f *tangentU, BAS_Vec3f *tangentV)
{
    constexpr int64_t kPointsPerTask = 1024;
    const auto alike = [&](int64_t a, int64_t b, int64_t point) {
        return gradients[size_t(a)].isMirrored == gradients[size_t(b)].isMirrored && texture.areAlike(a, b, point);
    };
    host::parallelFor(adjacency.points(), kPointsPerTask, [&](int64_t point) {
        const auto *const corners = adjacency.around(point);
        for (int64_t i = 0; i < adjacency.valence(point); ++i)
        {
            const int64_t corner = int64_t(corners[i]);
            if (i > 0 && alike(corner, int64_t(corners[i - 1]), point))
            {
                tangentU[corner] = tangentU[corners[i - 1]];
                tangentV[corner] = tangentV[corners[i - 1]];
                continue;
            }
            BAS_Vec3d sum(0.0);
            for (int64_t k = 0; k < adjacency.valence(point); ++k)
                if (alike(corner, int64_t(corners[k]), point))
                    sum += BAS_Vec3d(gradients[size_t(corners[k])].along);
            const BAS_Vec3d normal = texture.normal(corner, topology.point(corner));
            BAS_Vec3d along = host::direction(sum - normal * normal.dot(sum)), unused;
            if (along == BAS_Vec3d(0.0))
                host::faceFrame(normal, along, unused);
            tangentU[corner] = BAS_Vec3f(along);
            tangentV[corner] = BAS_Vec3f((normal % along) * (gradients[size_t(corner)].isMirrored ? -1.0 : 1.0));
        }
    });
}
}  // namespace

bool RQ_PrimPolygonMesh::makeTangents(int segment, RQ_DataArrayHandle &tangentU, RQ_DataArrayHandle &tangentV) const
{
    const rq::Positions positions(shared_ && vertexList_ ? shared_->get("P", segment) : nullptr);
    Texture texture{CornerValues(*this, "uv", segment), CornerValues(*this, "N", segment)};
    if (!positions.isValid() || !texture.uv.has(2))
        return false;
    if (!texture.normals.has(3))
        texture.normals =
            CornerValues(createPointNormals(segment, "P", true, nullptr, RQ_STORAGE_REAL32), positions.entries(), true);
    const Numbers u(new RQ_DANumeric<float>(getVertexCount(), 3, RQ_TYPE_VECTOR));
    const Numbers v(new RQ_DANumeric<float>(getVertexCount(), 3, RQ_TYPE_VECTOR));
    rq::visitTopology(counts_, *vertexList_, [&](const auto &topology) {
        const rq::SharedTopology::Adjacency adjacency(*topology_, positions.entries(), topology);
        const auto position = [&positions](int64_t point) { return positions[point]; };
        sumGradients(texture, topology, *adjacency, gradientsOf(texture, topology, position),
                     reinterpret_cast<BAS_Vec3f *>(u->data()), reinterpret_cast<BAS_Vec3f *>(v->data()));
    });
    tangentU = u;
    tangentV = v;
    return true;
}

bool RQ_PrimPolygonMesh::createFastTangents(RQ_DataArrayHandle &tangentU, RQ_DataArrayHandle &tangentV) const
{
    return makeTangents(0, tangentU, tangentV);
}

RQ_PolygonMeshHandle RQ_PrimPolygonMesh::createTangentsIfMissing(bool &changed) const
{
    changed = false;
    const RQ_PolygonMeshHandle self = const_cast<RQ_PrimPolygonMesh *>(this);
    for (const RQ_AttributeListHandle *list : {&vertex_, &shared_})
        if (*list && ((*list)->get("tangentu") || (*list)->get("tangentv")))
            return self;
    const int segments = shared_ ? getMotionSegments() : 0;
    std::vector<RQ_DataArrayHandle> tangentU(static_cast<size_t>(segments)), tangentV(static_cast<size_t>(segments));
    for (int segment = 0; segment < segments; ++segment)
        if (!makeTangents(segment, tangentU[size_t(segment)], tangentV[size_t(segment)]))
            return self;
    if (segments == 0)
        return self;
    const RQ_AttributeListHandle base =
        vertex_ ? vertex_ : RQ_AttributeListHandle(new RQ_AttributeList(new RQ_AttributeMap));
    changed = true;
    return clone(shared_,
                 base->addAttribute("tangentu", tangentU.data(), segments, true)
                     ->addAttribute("tangentv", tangentV.data(), segments, true),
                 uniform_, detail_);
}

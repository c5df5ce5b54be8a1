#include <apps/offline/MeshDrawable.h>

#include <algorithm>
#include <tuple>

#include <embree3/rtcore.h>

namespace rq::offline
{
namespace
{
/// "N" of every segment, of one where they do not differ.
std::vector<ElementValues> normalsOf(const RQ_Primitive &mesh, int steps)
{
    std::vector<ElementValues> normals;
    RQ_Owner owner;
    const RQ_DataArrayHandle &first = mesh.findAttribute("N", owner, 0);
    for (int segment = 0; segment < steps; ++segment)
        if (segment == 0 || mesh.findAttribute("N", owner, segment) != first)
            normals.emplace_back(mesh, std::initializer_list<const char *>{"N"}, 3, segment);
    return normals;
}

/// A quad is two triangles that share its second and fourth corner.
void setWeights(Place &place, float u, float v)
{
    float *w = place.weights;
    if (place.count == 3)
        std::tie(w[0], w[1], w[2]) = std::tuple(1.0f - u - v, u, v);
    else if (u + v <= 1.0f)
        std::tie(w[0], w[1], w[2], w[3]) = std::tuple(1.0f - u - v, u, 0.0f, v);
    else
        std::tie(w[0], w[1], w[2], w[3]) = std::tuple(0.0f, 1.0f - v, u + v - 1.0f, 1.0f - u);
}
}  // namespace

MeshDrawable::MeshDrawable(const RQ_PolygonMeshHandle &mesh, const Placing &placing)
    : Drawable(mesh, placing), points_(mesh->getShared(), matrices()), corners_(mesh->getVertexList()),
      cornersPerFace_(int(mesh->getMaxVertexCount())), normals_(normalsOf(*mesh, points_.steps())),
      placed_(matrices().begin(), matrices().end()), edges_(mesh->getVertex() ? mesh->getVertex()->get("__edge") : nullptr)
{}

RTCGeometryTy *MeshDrawable::makeGeometry(RTCDeviceTy *device) const
{
    if (corners_.entries() == 0)
        return nullptr;
    const bool quads = cornersPerFace_ == 4;
    const RTCGeometry geometry = rtcNewGeometry(device, quads ? RTC_GEOMETRY_TYPE_QUAD : RTC_GEOMETRY_TYPE_TRIANGLE);
    rtcSetGeometryTimeStepCount(geometry, unsigned(points_.steps()));
    for (int step = 0; step < points_.steps(); ++step)
        rtcSetSharedGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, unsigned(step), RTC_FORMAT_FLOAT3, points_.data(step),
                                   0, sizeof(BAS_Vec3f), size_t(points_.entries()));
    rtcSetSharedGeometryBuffer(geometry, RTC_BUFFER_TYPE_INDEX, 0, quads ? RTC_FORMAT_UINT4 : RTC_FORMAT_UINT3,
                               corners_.data(), 0, size_t(cornersPerFace_) * sizeof(int32_t),
                               size_t(corners_.entries() / cornersPerFace_));
    return geometry;
}

void MeshDrawable::addTo(Outline &outline) const
{
    const int64_t stride = Outline::stride(corners_.entries());
    for (int step = 0; step < points_.steps(); ++step)
        for (int64_t i = 0; i < corners_.entries(); ++i)
            outline.add(points_.at(corners_[i], step), 0.0f, i % stride == 0);
}

Place MeshDrawable::locate(int64_t face, float u, float v, Hit &hit) const
{
    Place place;
    place.count = cornersPerFace_;
    for (int i = 0; i < place.count; ++i)
    {
        const int64_t corner = place.count * face + i;
        place.elements[i] = {corner, corners_[corner], face};
    }
    setWeights(place, u, v);
    bend(place, hit);
    if (palette().showsEdges())
        hit.edge = edgeDistance(face, hit);
    return place;
}

void MeshDrawable::bend(const Place &place, Hit &hit) const
{
    const Moment moment(hit.time, int(placed_.size()));
    const Affine placed = moment.part > 0.0f
                              ? placed_[size_t(moment.step)].mixed(placed_[size_t(moment.step) + 1], moment.part)
                              : placed_[size_t(moment.step)];
    BAS_Vec3f normal(0.0f), lift(0.0f);
    for (int i = 0; i < place.count; ++i)
    {
        const Element &corner = place.elements[i];
        const BAS_Vec3f cornerSide = cornerNormal(corner, hit, placed);
        normal += cornerSide * place.weights[i];

        // Rays from a coarse but smooth surface start above its facets, so that these do not shade themselves
        // (Hanika, "Hacking the Shadow Terminator", 2021).
        const float below = std::min(0.0f, (hit.position - points_.atTime(corner.point, hit.time)) ^ cornerSide);
        lift -= cornerSide * (below * place.weights[i]);
    }
    if (normal.length2() > 0.0f)
        hit.normal = normal.normalized();
    hit.shadowOrigin += lift;
}

// On the side of the facet that the viewer sees; the facet's own where the attribute has none.
BAS_Vec3f MeshDrawable::cornerNormal(const Element &corner, const Hit &hit, const Affine &placed) const
{
    if (!normals_[0])
        return hit.facetNormal;
    const Moment moment(hit.time, int(normals_.size()));
    BAS_Vec3f given = normals_[size_t(moment.step)].tripleAt(corner);
    if (moment.part > 0.0f)
        given += (normals_[size_t(moment.step) + 1].tripleAt(corner) - given) * moment.part;
    const BAS_Vec3f normal = placed.normal(given);
    if (!(normal.length2() > 0.0f))
        return hit.facetNormal;
    return (normal ^ hit.facetNormal) < 0.0f ? -normal : normal;
}

float MeshDrawable::edgeDistance(int64_t face, const Hit &hit) const
{
    float nearest = std::numeric_limits<float>::infinity();
    for (int i = 0; i < cornersPerFace_; ++i)
    {
        const int64_t corner = cornersPerFace_ * face + i, next = cornersPerFace_ * face + (i + 1) % cornersPerFace_;
        if (edges_.entries() > 0 && edges_[corner] == 0)
            continue;
        const BAS_Vec3f from = points_.atTime(corners_[corner], hit.time);
        const BAS_Vec3f along = (points_.atTime(corners_[next], hit.time) - from).normalized(), way = hit.position - from;
        nearest = std::min(nearest, (way - along * (way ^ along)).length());
    }
    return nearest;
}
}  // namespace rq::offline

#include <apps/offline/TriangleDrawable.h>

#include <embree3/rtcore.h>

namespace rq::offline
{
TriangleDrawable::TriangleDrawable(const RQ_PolygonMeshHandle &mesh, const BAS_Mat4d &placement)
    : Drawable(mesh, placement), points_(place(mesh->getPointAttributes()->get("P"))), corners_(mesh->getVertexList()),
      normals_(*mesh, {"N"}, 3), normalMatrix_(matrix().inverse().transposed())
{}

RTCGeometryTy *TriangleDrawable::makeGeometry(RTCDeviceTy *device) const
{
    if (corners_.entries() == 0)
        return nullptr;
    const RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_TRIANGLE);
    // Points are read 16 bytes at a time, so they need a buffer with room behind the last; corners are shared as they are.
    auto *positions = static_cast<BAS_Vec3f *>(
        rtcSetNewGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3, sizeof(BAS_Vec3f), points_.size()));
    std::copy(points_.begin(), points_.end(), positions);
    rtcSetSharedGeometryBuffer(geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, corners_.data(), 0, 3 * sizeof(int32_t),
                               size_t(corners_.entries() / 3));
    return geometry;
}

void TriangleDrawable::addTo(Outline &outline) const
{
    const int64_t stride = Outline::stride(corners_.entries());
    for (int64_t i = 0; i < corners_.entries(); ++i)
        outline.add(points_[size_t(corners_[i])], 0.0f, i % stride == 0);
}

BAS_Vec3f TriangleDrawable::shadeItem(int64_t triangle, float u, float v, Hit &hit) const
{
    const float weights[3] = {1.0f - u - v, u, v};
    BAS_Vec3f normal(0.0f), colour(0.0f), lift(0.0f);
    for (int i = 0; i < 3; ++i)
    {
        const Element corner{3 * triangle + i, corners_[3 * triangle + i], triangle};
        const BAS_Vec3f cornerSide = cornerNormal(corner, hit.facetNormal);
        normal += cornerSide * weights[i];

        // Rays from a coarse but smooth surface start above its facets, so that these do not shade themselves
        // (Hanika, "Hacking the Shadow Terminator", 2021).
        const float below = std::min(0.0f, (hit.position - points_[size_t(corner.point)]) ^ cornerSide);
        lift -= cornerSide * (below * weights[i]);
        colour += colourOf(corner) * weights[i];
    }
    if (normal.length2() > 0.0f)
        hit.normal = normal.normalized();
    hit.shadowOrigin += lift;
    return colour;
}

// On the side of the facet that the viewer sees; the facet's own where the attribute has none.
BAS_Vec3f TriangleDrawable::cornerNormal(const Element &corner, const BAS_Vec3f &facet) const
{
    if (!normals_)
        return facet;
    BAS_Vec3d turned;
    normalMatrix_.multDirMatrix(BAS_Vec3d(normals_.tripleAt(corner)), turned);
    const double length = turned.length();
    if (!(length > 0.0) || !std::isfinite(length))
        return facet;
    const BAS_Vec3f normal(turned / length);
    return (normal ^ facet) < 0.0f ? -normal : normal;
}
}  // namespace rq::offline

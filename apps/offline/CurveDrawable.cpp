#include <apps/offline/CurveDrawable.h>

#include <embree3/rtcore.h>
#include <rq/data/DANumeric.h>

namespace rq::offline
{
namespace
{
/// Pieces join neighbouring vertices, so closed curves get their first vertex once more behind the last.
RQ_CurveMeshHandle opened(const RQ_CurveMeshHandle &curves)
{
    if (!curves->getWrap())
        return curves;
    const BAS_IntrusivePtr<RQ_DANumeric<int64_t>> vertices(new RQ_DANumeric<int64_t>(0)),
        counts(new RQ_DANumeric<int64_t>(0));
    for (int64_t curve = 0; curve < curves->getCurveCount(); ++curve)
    {
        const int64_t first = curves->getVertexOffset(curve), count = curves->getVertexCount(curve);
        for (int64_t i = 0; i < count; ++i)
            vertices->append(first + i);
        if (count > 0)
            vertices->append(first);
        counts->append(count > 0 ? count + 1 : 0);
    }
    return new RQ_PrimCurveMesh(*curves, RQ_BASIS_LINEAR, RQ_CountArray(counts),
                                curves->getVertex()->createIndirect(vertices), curves->getUniform(), curves->getDetail(),
                                false, nullptr);
}
}  // namespace

CurveDrawable::CurveDrawable(const RQ_CurveMeshHandle &mesh, const BAS_Mat4d &placement)
    : Drawable(opened(mesh), placement), points_(place(curves().getVertex()->get("P")))
{
    for (int64_t curve = 0; curve < curves().getCurveCount(); ++curve)
    {
        const auto [first, count] = curves().getCurveCountArray().getOffsetCount(curve);
        for (int64_t i = 0; i + 1 < count; ++i)
            pieces_.push_back({first + i, curve});
    }
}

float CurveDrawable::radius(const Element &vertex) const
{
    return radiusOf(vertex, std::clamp(0.04f / std::sqrt(float(curves().getCurveCount())), 1e-3f, 6e-3f));
}

RTCGeometryTy *CurveDrawable::makeGeometry(RTCDeviceTy *device) const
{
    if (pieces_.empty())
        return nullptr;
    const RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_ROUND_LINEAR_CURVE);
    const auto newBuffer = [&](RTCBufferType type, RTCFormat format, size_t size, size_t count) {
        return rtcSetNewGeometryBuffer(geometry, type, 0, format, size, count);
    };
    auto *balls =
        static_cast<float *>(newBuffer(RTC_BUFFER_TYPE_VERTEX, RTC_FORMAT_FLOAT4, 4 * sizeof(float), points_.size()));
    auto *firsts =
        static_cast<unsigned *>(newBuffer(RTC_BUFFER_TYPE_INDEX, RTC_FORMAT_UINT, sizeof(unsigned), pieces_.size()));
    auto *flags = static_cast<uint8_t *>(newBuffer(RTC_BUFFER_TYPE_FLAGS, RTC_FORMAT_UCHAR, 1, pieces_.size()));
    for (size_t i = 0; i < points_.size(); ++i)
        std::copy_n(&points_[i].x, 3, balls + 4 * i);
    for (size_t i = 0; i < pieces_.size(); ++i)
    {
        const auto [vertex, curve] = pieces_[i];
        for (const int64_t end : {vertex, vertex + 1})
            balls[4 * end + 3] = radius({end, 0, curve});
        const bool before = i > 0 && pieces_[i - 1].curve == curve;
        const bool behind = i + 1 < pieces_.size() && pieces_[i + 1].curve == curve;
        firsts[i] = unsigned(vertex);
        flags[i] = uint8_t((before ? RTC_CURVE_FLAG_NEIGHBOR_LEFT : 0) | (behind ? RTC_CURVE_FLAG_NEIGHBOR_RIGHT : 0));
    }
    return geometry;
}

void CurveDrawable::addTo(Outline &outline) const
{
    const size_t stride = size_t(Outline::stride(int64_t(pieces_.size())));
    for (size_t i = 0; i < pieces_.size(); ++i)
        for (const int64_t end : {pieces_[i].vertex, pieces_[i].vertex + 1})
            outline.add(points_[size_t(end)], radius({end, 0, pieces_[i].curve}), i % stride == 0);
}

BAS_Vec3f CurveDrawable::shadeItem(int64_t item, float u, float, Hit &) const
{
    const auto [vertex, curve] = pieces_[size_t(item)];
    return colourOf({vertex, 0, curve}) * (1.0f - u) + colourOf({vertex + 1, 0, curve}) * u;
}
}  // namespace rq::offline

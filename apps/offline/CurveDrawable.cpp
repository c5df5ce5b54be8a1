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

CurveDrawable::CurveDrawable(const RQ_CurveMeshHandle &mesh, const Placing &placing)
    : Drawable(opened(mesh), placing), points_(curves().getVertex(), matrices())
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
    const auto newBuffer = [&](RTCBufferType type, int step, RTCFormat format, size_t size, size_t count) {
        return rtcSetNewGeometryBuffer(geometry, type, unsigned(step), format, size, count);
    };
    rtcSetGeometryTimeStepCount(geometry, unsigned(points_.steps()));
    for (int step = 0; step < points_.steps(); ++step)
    {
        auto *balls = static_cast<float *>(
            newBuffer(RTC_BUFFER_TYPE_VERTEX, step, RTC_FORMAT_FLOAT4, 4 * sizeof(float), size_t(points_.entries())));
        for (int64_t i = 0; i < points_.entries(); ++i)
            std::copy_n(&points_.at(i, step).x, 3, balls + 4 * i);
        for (const auto &[vertex, curve] : pieces_)
            for (const int64_t end : {vertex, vertex + 1})
                balls[4 * end + 3] = radius({end, 0, curve});
    }
    auto *firsts =
        static_cast<unsigned *>(newBuffer(RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT, sizeof(unsigned), pieces_.size()));
    auto *flags = static_cast<uint8_t *>(newBuffer(RTC_BUFFER_TYPE_FLAGS, 0, RTC_FORMAT_UCHAR, 1, pieces_.size()));
    for (size_t i = 0; i < pieces_.size(); ++i)
    {
        const auto [vertex, curve] = pieces_[i];
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
    for (int step = 0; step < points_.steps(); ++step)
        for (size_t i = 0; i < pieces_.size(); ++i)
            for (const int64_t end : {pieces_[i].vertex, pieces_[i].vertex + 1})
                outline.add(points_.at(end, step), radius({end, 0, pieces_[i].curve}), i % stride == 0);
}

Place CurveDrawable::locate(int64_t item, float u, float, Hit &) const
{
    const auto [vertex, curve] = pieces_[size_t(item)];
    return {{{vertex, 0, curve}, {vertex + 1, 0, curve}}, {1.0f - u, u}, 2};
}
}  // namespace rq::offline

#include <rq/surface/PrimChannel.h>

#include <host/bas/JSONWriter.h>
#include <rq/data/DAConstantValue.h>
#include <rq/data/DANumeric.h>
#include <rq/prim/PrimitiveType.h>
#include <rq/prim/RefineParms.h>
#include <rq/surface/detail/curveWeights.h>
#include <rq/surface/detail/lists.h>
#include <rq/surface/detail/netDivisions.h>

namespace
{
constexpr int64_t kMostPieces = 16384, kMostPoints = int64_t(1) << 24;
constexpr int kCubic = 4;

using Points = BAS_IntrusivePtr<RQ_DANumeric<double>>;

/// The four Bezier vertices of a cubic stretch.
struct Stretch
{
    Stretch(const RQ_ChannelKeys &keys, size_t key)
    {
        const double begin = keys.times[key], third = (keys.times[key + 1] - begin) / 3.0;
        for (int i = 0; i < kCubic; ++i)
            times[i] = i == 3 ? keys.times[key + 1] : begin + i * third;
        values[0] = keys.values[key];
        values[1] = values[0] + keys.slopesBehind[key] * third;
        values[3] = keys.values[key + 1];
        values[2] = values[3] - keys.slopesBefore[key + 1] * third;
    }

    double times[kCubic], values[kCubic];
};

void append(RQ_DANumeric<double> &points, double time, double value)
{
    const double place[] = {time, value, 0.0};
    points.append(place);
}

/// The corners of the graph; of cubic stretches `pieces` points, or, with 0, the vertices between which they lie.
Points graphOf(const RQ_ChannelKeys &keys, int pieces)
{
    const Points points(new RQ_DANumeric<double>(0, 3, RQ_TYPE_POINT));
    for (size_t key = 0; key < keys.times.size(); ++key)
    {
        append(*points, keys.times[key], keys.values[key]);
        if (key + 1 == keys.times.size() || keys.segments[key] == RQ_ChannelKeys::LINEAR)
            continue;
        if (keys.segments[key] == RQ_ChannelKeys::CONSTANT)
        {
            append(*points, keys.times[key + 1], keys.values[key]);
            continue;
        }
        const Stretch stretch(keys, key);
        for (int i = 1; pieces == 0 && i < 3; ++i)
            append(*points, stretch.times[i], stretch.values[i]);
        for (int i = 1; i < pieces; ++i)
        {
            const double t = double(i) / pieces;
            double weights[kCubic], value = 0.0;
            rq::basisWeights(RQ_BASIS_BEZIER, kCubic, t, weights);
            for (int k = 0; k < kCubic; ++k)
                value += weights[k] * stretch.values[k];
            append(*points, stretch.times[0] + t * (stretch.times[3] - stretch.times[0]), value);
        }
    }
    return points;
}

RQ_AttributeListHandle listOf(const Points &points)
{
    return RQ_AttributeListHandle(new RQ_AttributeList(nullptr))->addAttribute("P", points, false);
}
}  // namespace

RQ_PrimChannel::RQ_PrimChannel() = default;
RQ_PrimChannel::RQ_PrimChannel(const RQ_PrimChannel &other) = default;
RQ_PrimChannel::~RQ_PrimChannel() = default;

bool RQ_PrimChannel::init(RQ_ChannelKeys keys, const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform,
                          const RQ_AttributeListHandle &detail)
{
    const size_t count = keys.times.size();
    if (keys.values.size() != count || keys.slopesBefore.size() != count || keys.slopesBehind.size() != count ||
        keys.segments.size() != count || !rq::checkLengths("vertex", vertex, keys.count()).empty() ||
        !rq::checkLengths("uniform", uniform, 1).empty())
        return false;
    keys_ = std::move(keys);
    setLists(vertex, uniform, detail);
    return true;
}

RQ_CurveMeshHandle RQ_PrimChannel::refineToCurve(const RQ_RefineParms *parms) const
{
    const int pieces = rq::netDivisions(kCubic, RQ_RefineParms::getLOD(parms),
                                        std::min(kMostPieces, kMostPoints / std::max<int64_t>(1, keys_.count())));
    const RQ_AttributeListHandle vertex = getVertex() ? getVertex() : listOf(graphOf(keys_, pieces));
    const int64_t count = rq::entriesOf(vertex);
    if (count < 2)
        return {};
    const RQ_DataArrayHandle counts(new RQ_DAConstantValue<int64_t>(1, count));
    return new RQ_PrimCurveMesh(RQ_BASIS_LINEAR, counts, vertex, getUniform(), getDetail());
}

void RQ_PrimChannel::enlargeBounds(BAS_BoundingBox *boxes, int segments) const
{
    const RQ_AttributeListHandle hull = getVertex() ? getVertex() : listOf(graphOf(keys_, 0));
    rq::enlargeWithWidths(*this, boxes, segments, [&](BAS_BoundingBox *own) { enlargeP(own, segments, hull); });
}

bool RQ_PrimChannel::refine(RQ_Refine &sink, const RQ_RefineParms *parms) const
{
    return handOver(refineToCurve(parms), sink);
}

int64_t RQ_PrimChannel::getMemoryUsage() const
{
    const int64_t perKey = 4 * sizeof(double) + sizeof(int32_t);
    return RQ_PrimNet::getMemoryUsage() + int64_t(sizeof(*this) - sizeof(RQ_PrimNet)) + perKey * keys_.count();
}

const char *RQ_PrimChannel::className() const { return "RQ_PrimChannel"; }
int RQ_PrimChannel::getPrimitiveType() const { return RQ_PRIM_CHANNEL; }
RQ_PrimitiveHandle RQ_PrimChannel::doSoftCopy() const { return new RQ_PrimChannel(*this); }

bool RQ_PrimChannel::saveShape(BAS_JSONWriter &writer) const
{
    bool isWritten = writer.beginMap();
    const auto write = [&](const char *name, const auto &values) {
        isWritten = isWritten && writer.key(name) && writer.uniformArray(values.data(), int64_t(values.size()));
    };
    write("times", keys_.times);
    write("values", keys_.values);
    write("slopes_before", keys_.slopesBefore);
    write("slopes_behind", keys_.slopesBehind);
    write("segments", keys_.segments);
    return isWritten && writer.endMap();
}

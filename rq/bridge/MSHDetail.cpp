#include <rq/bridge/MSHDetail.h>

#include <host/bas/JSONWriter.h>
#include <host/msh/Detail.h>
#include <rq/bridge/MSHPrimCollectPoly.h>
#include <rq/bridge/detail/DetailWalk.h>
#include <rq/bridge/detail/LoosePoints.h>
#include <rq/bridge/detail/placedBounds.h>
#include <rq/prim/PrimitiveJSON.h>
#include <rq/prim/PrimitiveType.h>

namespace
{
/// The part of a range that there are primitives in: it may come from another snapshot.
RQ_MSHDetail::RangeHandle within(const MSH_Detail *detail, const RQ_MSHDetail::RangeHandle &range)
{
    const int64_t capacity = detail ? detail->capacity(ELM_OWNER_PRIMITIVE) : 0;
    if (!range || (range->begin() >= 0 && range->end() <= capacity))
        return range;
    return std::make_shared<const ELM_Range>(range->slice(0, capacity));
}
}  // namespace

RQ_MSHDetail::RQ_MSHDetail(const MOD_ConstDetailHandle &detail, const RangeHandle &range)
    : RQ_MSHDetail(std::vector<MOD_ConstDetailHandle>{detail}, range)
{}

RQ_MSHDetail::RQ_MSHDetail(std::vector<MOD_ConstDetailHandle> details, const RangeHandle &range, double secondsApart)
    : RQ_MSHDetail(std::make_shared<RQ_MSHDetailList>(std::move(details), secondsApart), range)
{}

RQ_MSHDetail::RQ_MSHDetail(const RQ_MSHDetailListHandle &details, const RangeHandle &range)
    : details_(details), range_(within(details->getDetail(), range))
{}

RQ_MSHDetail::RQ_MSHDetail(const RQ_MSHDetail &other) = default;
RQ_MSHDetail::~RQ_MSHDetail() = default;

RQ_PrimitiveHandle RQ_MSHDetail::makeDetail(const MOD_ConstDetailHandle &detail, const RangeHandle &range)
{
    return new RQ_MSHDetail(detail, range);
}

RQ_PrimitiveHandle RQ_MSHDetail::makeMoving(const MOD_ConstDetailHandle &detail, int segments, double secondsApart,
                                            const RangeHandle &range)
{
    return new RQ_MSHDetail(std::make_shared<RQ_MSHDetailList>(detail, segments, secondsApart), range);
}

RQ_PrimitiveHandle RQ_MSHDetail::makePolygonMesh(const MOD_ConstDetailHandle &detail, const RangeHandle &range,
                                                 const RQ_RefineParms *parms)
{
    if (!detail)
        return nullptr;
    const auto details = std::make_shared<RQ_MSHDetailList>(detail);
    RQ_MSHPrimCollectPolyData polygons(parms);
    const MSH_Detail &snapshot = *detail.readLock();
    const ELM_Range all = range ? *within(&snapshot, range) : snapshot.range(ELM_OWNER_PRIMITIVE);
    RQ_MSHPrimCollectPoly().collectAll(details, &polygons, snapshot, all, nullptr);
    return polygons.makeMesh(details);
}

RQ_PrimitiveHandle RQ_MSHDetail::makePointMesh(const MOD_ConstDetailHandle &detail, const RangeHandle &range)
{
    if (!detail)
        return nullptr;
    const MSH_Detail &snapshot = *detail.readLock();
    const RQ_MSHOffsetList points(snapshot, range ? *range : snapshot.range(ELM_OWNER_POINT));
    return points.entries() > 0 ? rq::makePointMesh(RQ_MSHDetailList(detail), points, nullptr) : nullptr;
}

const char *RQ_MSHDetail::className() const { return "RQ_MSHDetail"; }
int RQ_MSHDetail::getPrimitiveType() const { return RQ_PRIM_MSH_DETAIL; }

void RQ_MSHDetail::enlargeBounds(BAS_BoundingBox *boxes, int segments) const
{
    const MSH_Detail *detail = details_->getDetail();
    if (!detail)
        return;
    RQ_MSHOffsetList points(*detail, ELM_OWNER_POINT);
    if (range_)
    {
        points.clear();
        for (const auto [begin, end] : range_->blocks())
            for (ELM_Offset primitive = begin; primitive < end; ++primitive)
                for (int64_t vertex = 0; vertex < detail->vertexRun(primitive).count; ++vertex)
                    if (const ELM_Offset point = MSH_Primitive(*detail, primitive).point(vertex); point >= 0)
                        points.append(point);
    }
    enlargeP(boxes, segments, details_->getPointAttributes(nullptr, points));
    rq::enlargeByPlaced(boxes, segments, details_, range_ ? *range_ : detail->range(ELM_OWNER_PRIMITIVE),
                        getPrimitiveTransform());
}

void RQ_MSHDetail::getVelocityRange(BAS_Vec3f &minimum, BAS_Vec3f &maximum, const BAS_StringHolder &name) const
{
    const MSH_Detail *detail = details_->getDetail();
    const RQ_AttributeListHandle points =
        detail ? details_->getPointAttributes(nullptr, RQ_MSHOffsetList(*detail, ELM_OWNER_POINT)) : nullptr;
    computeVelocityRange(minimum, maximum, points ? points->get(name, 0) : nullptr);
}

bool RQ_MSHDetail::refine(RQ_Refine &sink, const RQ_RefineParms *parms) const
{
    if (!details_->getDetail())
        return false;
    for (const RQ_PrimitiveHandle &primitive : rq::DetailWalk(details_, range_.get(), parms).run())
        if (primitive)
            sink.addPrimitive(primitive->copyTransformed(getPrimitiveTransform()));
    return true;
}

int64_t RQ_MSHDetail::getMemoryUsage() const
{
    return int64_t(sizeof(*this) + sizeof(RQ_MSHDetailList)) +
           details_->getSegments() * int64_t(sizeof(MOD_ConstDetailHandle));
}

bool RQ_MSHDetail::save(BAS_JSONWriter &writer) const
{
    const jsonWriter record(writer, RQprimitiveType(RQ_PRIM_MSH_DETAIL));
    const MSH_Detail *detail = details_->getDetail();
    return record->beginMap() && record->writeKeyInt("points", detail ? detail->pointCount() : 0) &&
           record->writeKeyInt("vertices", detail ? detail->vertexCount() : 0) &&
           record->writeKeyInt("primitives", detail ? detail->primitiveCount() : 0) && record->endMap() &&
           saveAttributeLists(*record);
}

RQ_PrimitiveHandle RQ_MSHDetail::doSoftCopy() const { return new RQ_MSHDetail(*this); }

RQ_PrimitiveHandle RQ_Primitive::refineDetail(const MOD_ConstDetailHandle &detail, const RQ_RefineParms *parms)
{
    return refinePrimitive(RQ_MSHDetail::makeDetail(detail), parms);
}

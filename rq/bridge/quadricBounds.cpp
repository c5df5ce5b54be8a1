#include <rq/bridge/detail/quadricBounds.h>

#include <rq/bridge/MSHPrimCollectQuadric.h>
#include <rq/bridge/MSHPrimCollectTube.h>
#include <rq/prim/PrimCollect.h>

namespace
{
void enlargeBy(BAS_BoundingBox *boxes, int segments, const RQ_PrimitiveHandle &primitive,
               const RQ_TransformHandle &placement)
{
    if (const auto *several = dynamic_cast<const RQ_PrimCollect *>(primitive.get()))
        for (int64_t i = 0; i < several->entries(); ++i)
            enlargeBy(boxes, segments, several->getPrim(i), placement);
    else if (primitive)
        primitive->copyTransformed(placement)->enlargeBounds(boxes, segments);
}

RQ_PrimitiveHandle gather(const RQ_MSHDetailListHandle &details, const ELM_Range &primitives, ELM_PrimitiveTypeId type,
                          const RQ_MSHPrimCollect &collector)
{
    const MSH_Detail &detail = *details->getDetail();
    if (detail.primitiveCount(type) == 0)
        return nullptr;
    const std::unique_ptr<RQ_MSHPrimCollectData> data(collector.beginCollecting(details, nullptr));
    for (const auto [begin, end] : primitives.blocks())
        for (ELM_Offset offset = begin; offset < end; ++offset)
            if (const MSH_Primitive primitive(detail, offset), *view = &primitive; primitive.type() == type)
                collector.collect(details, &view, 1, data.get());
    return collector.endCollecting(details, data.get());
}
}  // namespace

void rq::enlargeByQuadrics(BAS_BoundingBox *boxes, int segments, const RQ_MSHDetailListHandle &details,
                           const ELM_Range &primitives, const RQ_TransformHandle &placement)
{
    for (const ELM_PrimitiveTypeId type : {ELM_PRIMITIVE_CIRCLE, ELM_PRIMITIVE_SPHERE})
        enlargeBy(boxes, segments, gather(details, primitives, type, RQ_MSHPrimCollectQuadric(type)), placement);
    enlargeBy(boxes, segments, gather(details, primitives, ELM_PRIMITIVE_TUBE, RQ_MSHPrimCollectTube()), placement);
}

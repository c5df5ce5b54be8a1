#include <rq/bridge/detail/placedBounds.h>

#include <rq/bridge/MSHPrimCollectMeta.h>
#include <rq/bridge/MSHPrimCollectQuadric.h>
#include <rq/bridge/MSHPrimCollectTube.h>
#include <rq/bridge/MSHPrimPacked.h>
#include <rq/bridge/PrimVDB.h>
#include <rq/bridge/PrimVolume.h>
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

/// Call `visit(primitive)` for all of a type.
template <class Visit>
void visitAll(const MSH_Detail &detail, const ELM_Range &primitives, ELM_PrimitiveTypeId type, Visit &&visit)
{
    if (detail.primitiveCount(type) == 0)
        return;
    for (const auto [begin, end] : primitives.blocks())
        for (ELM_Offset offset = begin; offset < end; ++offset)
            if (const MSH_Primitive primitive(detail, offset); primitive.type() == type)
                visit(primitive);
}

RQ_PrimitiveHandle gather(const RQ_MSHDetailListHandle &details, const ELM_Range &primitives, ELM_PrimitiveTypeId type,
                          const RQ_MSHPrimCollect &collector)
{
    const std::unique_ptr<RQ_MSHPrimCollectData> data(collector.beginCollecting(details, nullptr));
    visitAll(*details->getDetail(), primitives, type, [&](const MSH_Primitive &primitive) {
        const MSH_Primitive *const view = &primitive;
        collector.collect(details, &view, 1, data.get());
    });
    return collector.endCollecting(details, data.get());
}

template <class Volume>
void enlargeByVolumes(BAS_BoundingBox *boxes, int segments, const RQ_MSHDetailListHandle &details,
                      const ELM_Range &primitives, ELM_PrimitiveTypeId type, const RQ_TransformHandle &placement)
{
    visitAll(*details->getDetail(), primitives, type, [&](const MSH_Primitive &primitive) {
        enlargeBy(boxes, segments, RQ_PrimitiveHandle(new Volume(*details, primitive.offset())), placement);
    });
}

void enlargeByPacked(BAS_BoundingBox *boxes, int segments, const RQ_MSHDetailListHandle &details,
                     const ELM_Range &primitives, const RQ_TransformHandle &placement)
{
    for (int64_t i = 0; i < ELM_PrimitiveFactory::count(); ++i)
        if (const ELM_PrimitiveDefinition *type = ELM_PrimitiveFactory::at(i); type->isPacked)
            visitAll(*details->getDetail(), primitives, type->id, [&](const MSH_Primitive &primitive) {
                if (MOD_PrimPacked(primitive).isValid())
                    enlargeBy(boxes, segments, RQ_PrimitiveHandle(new RQ_MSHPrimPacked(details, primitive.offset())),
                              placement);
            });
}
}  // namespace

void rq::enlargeByPlaced(BAS_BoundingBox *boxes, int segments, const RQ_MSHDetailListHandle &details,
                         const ELM_Range &primitives, const RQ_TransformHandle &placement)
{
    for (const ELM_PrimitiveTypeId type : {ELM_PRIMITIVE_CIRCLE, ELM_PRIMITIVE_SPHERE})
        enlargeBy(boxes, segments, gather(details, primitives, type, RQ_MSHPrimCollectQuadric(type)), placement);
    enlargeBy(boxes, segments, gather(details, primitives, ELM_PRIMITIVE_TUBE, RQ_MSHPrimCollectTube()), placement);
    for (const ELM_PrimitiveTypeId type :
         {ELM_PRIMITIVE_BLOB_ELLIPSOID, ELM_PRIMITIVE_BLOB_QUADRIC, ELM_PRIMITIVE_BLOB_CAPSULE, ELM_PRIMITIVE_BLOB_BOX})
        enlargeBy(boxes, segments, gather(details, primitives, type, RQ_MSHPrimCollectMeta()), placement);
    enlargeByVolumes<RQ_PrimVolume>(boxes, segments, details, primitives, ELM_PRIMITIVE_VOLUME, placement);
    enlargeByVolumes<RQ_PrimVDB>(boxes, segments, details, primitives, ELM_PRIMITIVE_SPARSE_VOLUME, placement);
    enlargeByPacked(boxes, segments, details, primitives, placement);
}

#include <rq/bridge/MSHPrimCollectPacked.h>

#include <rq/bridge/MSHPrimPacked.h>
#include <rq/bridge/MSHPrimitive.h>
#include <rq/bridge/detail/packedLevels.h>

RQ_MSHPrimCollectPackedData::RQ_MSHPrimCollectPackedData(const RQ_RefineParms *parms)
    : usesOwnLevel_(parms && parms->getPackedViewportLOD())
{}

RQ_MSHPrimCollectPackedData::~RQ_MSHPrimCollectPackedData() = default;

bool RQ_MSHPrimCollectPackedData::take(const MOD_PrimPacked &packed)
{
    if (!usesOwnLevel_)
        return false;
    const ELM_Offset primitive = packed.offset(), vertex = packed.vertexOrNone(), point = packed.pointOrNone();
    switch (packed.viewportLOD())
    {
    case rq::kPackedNothing:
        return true;
    case rq::kPackedCentroid:
        boxes_.appendCentroid(packed.bounds(), packed.fullTransform(), primitive, vertex, point);
        return true;
    case rq::kPackedBox:
        boxes_.appendBox(packed.bounds(), packed.fullTransform(), primitive, vertex, point);
        return true;
    default:
        return false;
    }
}

RQ_MSHPrimCollectData *RQ_MSHPrimCollectPacked::beginCollecting(const RQ_MSHDetailListHandle &,
                                                                const RQ_RefineParms *parms) const
{
    return new RQ_MSHPrimCollectPackedData(parms);
}

RQ_PrimitiveHandle RQ_MSHPrimCollectPacked::collect(const RQ_MSHDetailListHandle &details,
                                                    const MSH_Primitive *const *primitives, int,
                                                    RQ_MSHPrimCollectData *data) const
{
    const MOD_PrimPacked packed(*primitives[0]);
    if (!packed.isValid())  // an application's own type, which keeps something else
        return new RQ_MSHPrimitive(details, primitives[0]->offset());
    if (static_cast<RQ_MSHPrimCollectPackedData *>(data)->take(packed))
        return nullptr;
    return makePrimitive(details, packed, data);
}

RQ_PrimitiveHandle RQ_MSHPrimCollectPacked::makePrimitive(const RQ_MSHDetailListHandle &details,
                                                          const MOD_PrimPacked &packed, RQ_MSHPrimCollectData *) const
{
    return new RQ_MSHPrimPacked(details, packed.offset());
}

RQ_PrimitiveHandle RQ_MSHPrimCollectPacked::endCollecting(const RQ_MSHDetailListHandle &, RQ_MSHPrimCollectData *data) const
{
    return static_cast<const RQ_MSHPrimCollectPackedData *>(data)->getBoxes().getPrimitive();
}

void RQ_MSHPrimCollectPacked::mergeData(RQ_MSHPrimCollectData *into, RQ_MSHPrimCollectData *from) const
{
    static_cast<RQ_MSHPrimCollectPackedData *>(into)->append(*static_cast<const RQ_MSHPrimCollectPackedData *>(from));
}

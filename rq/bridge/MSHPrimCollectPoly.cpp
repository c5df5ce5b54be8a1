#include <rq/bridge/MSHPrimCollectPoly.h>

#include <host/msh/Primitive.h>
#include <rq/bridge/detail/selectPrimitives.h>
#include <rq/prim/PrimCollect.h>

RQ_MSHPrimCollectData *RQ_MSHPrimCollectPoly::beginCollecting(const RQ_MSHDetailListHandle &,
                                                              const RQ_RefineParms *parms) const
{
    return new RQ_MSHPrimCollectPolyData(parms);
}

RQ_PrimitiveHandle RQ_MSHPrimCollectPoly::collect(const RQ_MSHDetailListHandle &, const MSH_Primitive *const *primitives,
                                                  int, RQ_MSHPrimCollectData *data) const
{
    static_cast<RQ_MSHPrimCollectPolyData *>(data)->append(primitives[0]->detail(), primitives[0]->offset());
    return nullptr;
}

void RQ_MSHPrimCollectPoly::collectOne(const RQ_MSHDetailListHandle &, RQ_MSHPrimCollectData *data, const MSH_Detail &detail,
                                       ELM_Offset primitive) const
{
    static_cast<RQ_MSHPrimCollectPolyData *>(data)->append(detail, primitive);
}

void RQ_MSHPrimCollectPoly::collectAll(const RQ_MSHDetailListHandle &, RQ_MSHPrimCollectData *data, const MSH_Detail &detail,
                                       const ELM_Range &range, const ELM_Group *skip) const
{
    BAS_Progress progress("Collecting polygons");
    static_cast<RQ_MSHPrimCollectPolyData *>(data)->append(detail, rq::selectPrimitives(range, nullptr, skip), progress);
    if (progress.isInterrupted())
        data->setInterrupted();
}

void RQ_MSHPrimCollectPoly::mergeData(RQ_MSHPrimCollectData *into, RQ_MSHPrimCollectData *from) const
{
    static_cast<RQ_MSHPrimCollectPolyData *>(into)->append(*static_cast<RQ_MSHPrimCollectPolyData *>(from));
}

RQ_PrimitiveHandle RQ_MSHPrimCollectPoly::endCollecting(const RQ_MSHDetailListHandle &details,
                                                        RQ_MSHPrimCollectData *data) const
{
    auto &polygons = *static_cast<RQ_MSHPrimCollectPolyData *>(data);
    const RQ_PrimitiveHandle faces = polygons.makeFaces(details), curves = polygons.makeCurves(details);
    if (!faces || !curves)
        return faces ? faces : curves;
    const BAS_IntrusivePtr<RQ_PrimCollect> both(new RQ_PrimCollect);
    both->appendPrimitive(faces);
    both->appendPrimitive(curves);
    return both;
}

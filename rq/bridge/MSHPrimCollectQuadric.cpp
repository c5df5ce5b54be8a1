#include <rq/bridge/MSHPrimCollectQuadric.h>

#include <host/elm/PrimitiveFactory.h>
#include <rq/bridge/detail/PlacedPrimitives.h>
#include <rq/surface/PrimCircleMesh.h>
#include <rq/surface/PrimSphereMesh.h>

RQ_MSHPrimCollectData *RQ_MSHPrimCollectQuadric::beginCollecting(const RQ_MSHDetailListHandle &,
                                                                 const RQ_RefineParms *parms) const
{
    return new rq::PlacedOffsets(parms);
}

RQ_PrimitiveHandle RQ_MSHPrimCollectQuadric::collect(const RQ_MSHDetailListHandle &, const MSH_Primitive *const *primitives,
                                                     int, RQ_MSHPrimCollectData *data) const
{
    static_cast<rq::PlacedOffsets *>(data)->append(*primitives[0]);
    return nullptr;
}

void RQ_MSHPrimCollectQuadric::mergeData(RQ_MSHPrimCollectData *into, RQ_MSHPrimCollectData *from) const
{
    static_cast<rq::PlacedOffsets *>(into)->append(*static_cast<const rq::PlacedOffsets *>(from));
}

RQ_PrimitiveHandle RQ_MSHPrimCollectQuadric::endCollecting(const RQ_MSHDetailListHandle &details,
                                                           RQ_MSHPrimCollectData *data) const
{
    const auto &gathered = static_cast<const rq::PlacedOffsets &>(*data);
    const RQ_MSHOffsetList &quadrics = gathered.getPrimitives();
    if (quadrics.entries() == 0)
        return nullptr;
    BAS_IntrusivePtr<RQ_PrimQuadricMesh> mesh;
    if (type_ == ELM_PRIMITIVE_CIRCLE)
        mesh = new RQ_PrimCircleMesh;
    else
        mesh = new RQ_PrimSphereMesh;
    mesh->init(rq::attributesOfPlaced(*details, quadrics, gathered.parms()),
               details->getDetailAttributes(nullptr, gathered.parms()), rq::placementsOf(*details, quadrics));
    return mesh;
}

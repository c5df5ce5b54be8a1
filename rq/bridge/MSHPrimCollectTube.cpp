#include <rq/bridge/MSHPrimCollectTube.h>

#include <rq/bridge/detail/PlacedPrimitives.h>
#include <rq/prim/PrimCollect.h>
#include <rq/surface/PrimTubeMesh.h>

RQ_MSHPrimCollectTubeData::~RQ_MSHPrimCollectTubeData() = default;

RQ_MSHPrimCollectData *RQ_MSHPrimCollectTube::beginCollecting(const RQ_MSHDetailListHandle &,
                                                              const RQ_RefineParms *parms) const
{
    return new RQ_MSHPrimCollectTubeData(parms);
}

RQ_PrimitiveHandle RQ_MSHPrimCollectTube::collect(const RQ_MSHDetailListHandle &, const MSH_Primitive *const *primitives,
                                                  int, RQ_MSHPrimCollectData *data) const
{
    static_cast<RQ_MSHPrimCollectTubeData *>(data)->append(MSH_Quadric(*primitives[0]));
    return nullptr;
}

void RQ_MSHPrimCollectTube::mergeData(RQ_MSHPrimCollectData *into, RQ_MSHPrimCollectData *from) const
{
    static_cast<RQ_MSHPrimCollectTubeData *>(into)->append(*static_cast<const RQ_MSHPrimCollectTubeData *>(from));
}

RQ_PrimitiveHandle RQ_MSHPrimCollectTube::endCollecting(const RQ_MSHDetailListHandle &details,
                                                        RQ_MSHPrimCollectData *data) const
{
    const auto &gathered = static_cast<const RQ_MSHPrimCollectTubeData &>(*data);
    const RQ_AttributeListHandle whole = details->getDetailAttributes(nullptr, gathered.getParms());
    BAS_IntrusivePtr<RQ_PrimCollect> all(new RQ_PrimCollect);
    for (const auto &[kind, tubes] : gathered.getGroups())
    {
        const BAS_IntrusivePtr<RQ_PrimTubeMesh> mesh(new RQ_PrimTubeMesh);
        if (mesh->init(kind.taper, kind.caps, rq::attributesOfPlaced(*details, tubes, gathered.getParms()), whole,
                       rq::placementsOf(*details, tubes)))
            all->appendPrimitive(mesh);
    }
    return all->entries() > 1 ? RQ_PrimitiveHandle(all) : all->getPrim(0);
}

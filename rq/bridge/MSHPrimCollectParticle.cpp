#include <rq/bridge/MSHPrimCollectParticle.h>

#include <host/msh/Particles.h>
#include <rq/bridge/detail/RunOptions.h>
#include <rq/bridge/detail/hasAllPoints.h>
#include <rq/prim/RefineParms.h>
#include <rq/surface/PrimPointMesh.h>

RQ_MSHPrimCollectData *RQ_MSHPrimCollectParticle::beginCollecting(const RQ_MSHDetailListHandle &,
                                                                  const RQ_RefineParms *parms) const
{
    return new rq::RunOptions(parms);
}

RQ_PrimitiveHandle RQ_MSHPrimCollectParticle::collect(const RQ_MSHDetailListHandle &details,
                                                      const MSH_Primitive *const *primitives, int,
                                                      RQ_MSHPrimCollectData *data) const
{
    const MSH_Particles system(*primitives[0]);
    const RQ_RefineParms *parms = rq::RunOptions::of(data);
    if (system.particles() == 0 || !rq::hasAllPoints(system))
        return nullptr;
    return new RQ_PrimPointMesh(details->createVertex(nullptr, system.offset(), parms, RQ_MSHIncludePoint::INCLUDE),
                                details->createPrimitive(nullptr, system.offset(), parms, RQ_MSHIncludeDetail::INCLUDE));
}

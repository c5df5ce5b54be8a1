#include <rq/bridge/MSHPrimCollectHexahedron.h>

#include <rq/surface/PrimHexMesh.h>

RQ_MSHPrimCollectData *RQ_MSHPrimCollectHexahedron::beginCollecting(const RQ_MSHDetailListHandle &,
                                                                    const RQ_RefineParms *parms) const
{
    return new RQ_MSHPrimCollectHexahedronData(parms);
}

RQ_PrimitiveHandle RQ_MSHPrimCollectHexahedron::endCollecting(const RQ_MSHDetailListHandle &details,
                                                              RQ_MSHPrimCollectData *data) const
{
    return static_cast<RQ_MSHPrimCollectHexahedronData *>(data)->fill(new RQ_PrimHexMesh, details);
}

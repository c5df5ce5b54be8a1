#include <rq/bridge/MSHPrimCollectTetrahedron.h>

#include <rq/surface/PrimTetMesh.h>

RQ_MSHPrimCollectData *RQ_MSHPrimCollectTetrahedron::beginCollecting(const RQ_MSHDetailListHandle &,
                                                                     const RQ_RefineParms *parms) const
{
    return new RQ_MSHPrimCollectTetrahedronData(parms);
}

RQ_PrimitiveHandle RQ_MSHPrimCollectTetrahedron::endCollecting(const RQ_MSHDetailListHandle &details,
                                                               RQ_MSHPrimCollectData *data) const
{
    return static_cast<RQ_MSHPrimCollectTetrahedronData *>(data)->fill(new RQ_PrimTetMesh, details);
}

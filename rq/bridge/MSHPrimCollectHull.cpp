#include <rq/bridge/MSHPrimCollectHull.h>

#include <host/msh/Grid.h>
#include <rq/bridge/detail/NetLists.h>
#include <rq/prim/PrimCollect.h>
#include <rq/surface/PrimPatch.h>
#include <rq/surface/PrimPatchMesh.h>

namespace
{
/// Null for a grid without a cell.
RQ_PrimitiveHandle patchesOf(const RQ_MSHDetailList &details, const MSH_Grid &grid, const RQ_RefineParms *parms)
{
    if (grid.cellsU() < 1 || grid.cellsV() < 1)
        return nullptr;
    const RQ_NetDirection u{RQ_BASIS_LINEAR, 2, grid.wrapsU(), grid.columns(), {}};
    const RQ_NetDirection v{RQ_BASIS_LINEAR, 2, grid.wrapsV(), grid.rows(), {}};
    BAS_IntrusivePtr<RQ_PrimTensorPatch> made;
    if (grid.columns() == 2 && grid.rows() == 2 && !grid.wrapsU() && !grid.wrapsV())
        made = new RQ_PrimPatch;
    else
        made = new RQ_PrimPatchMesh;
    const rq::NetLists lists(details, grid, parms);
    return made->init(u, v, lists.vertex, lists.uniform, lists.detail) ? made : nullptr;
}
}  // namespace

RQ_MSHPrimCollectHullData::~RQ_MSHPrimCollectHullData() = default;

void RQ_MSHPrimCollectHullData::append(const MSH_Primitive &grid)
{
    if (rq::hasAllPoints(grid))
        RQ_MSHPrimCollectOffsets::append(grid);
}

RQ_MSHPrimCollectData *RQ_MSHPrimCollectHull::beginCollecting(const RQ_MSHDetailListHandle &,
                                                              const RQ_RefineParms *parms) const
{
    return new RQ_MSHPrimCollectHullData(parms);
}

RQ_PrimitiveHandle RQ_MSHPrimCollectHull::collect(const RQ_MSHDetailListHandle &, const MSH_Primitive *const *primitives,
                                                  int, RQ_MSHPrimCollectData *data) const
{
    static_cast<RQ_MSHPrimCollectHullData *>(data)->append(*primitives[0]);
    return nullptr;
}

void RQ_MSHPrimCollectHull::mergeData(RQ_MSHPrimCollectData *into, RQ_MSHPrimCollectData *from) const
{
    static_cast<RQ_MSHPrimCollectHullData *>(into)->append(*static_cast<const RQ_MSHPrimCollectHullData *>(from));
}

RQ_PrimitiveHandle RQ_MSHPrimCollectHull::endCollecting(const RQ_MSHDetailListHandle &details,
                                                        RQ_MSHPrimCollectData *data) const
{
    const auto &gathered = static_cast<const RQ_MSHPrimCollectHullData &>(*data);
    const RQ_MSHOffsetList &grids = gathered.getPrimitives();
    BAS_IntrusivePtr<RQ_PrimCollect> all(new RQ_PrimCollect);
    for (int64_t i = 0; i < grids.entries(); ++i)
        if (const RQ_PrimitiveHandle made =
                patchesOf(*details, MSH_Grid(*details->getDetail(), grids[i]), gathered.getParms()))
            all->appendPrimitive(made);
    return all->entries() > 1 ? RQ_PrimitiveHandle(all) : all->getPrim(0);
}

#include <rq/bridge/MSHPrimCollectPoly.h>

#include <host/elm/PrimitiveFactory.h>
#include <host/msh/Detail.h>
#include <rq/bridge/MSHPrimitive.h>
#include <rq/bridge/detail/selectPrimitives.h>
#include <rq/prim/PrimCollect.h>
#include <rq/surface/PrimSubdivisionMesh.h>

RQ_MSHPrimCollectPolyData::RQ_MSHPrimCollectPolyData(const RQ_RefineParms *parms)
    : parms_(parms), fastCompacting_(RQ_RefineParms::getFastPolyCompacting(parms))
{}

RQ_MSHPrimCollectPolyData::~RQ_MSHPrimCollectPolyData() = default;

void RQ_MSHPrimCollectPolyData::append(const MSH_Detail &detail, ELM_Offset primitive)
{
    if (!reader_ || !reader_->reads(detail))
        reader_.emplace(detail);
    reader_->visitOne(
        primitive, [this](ELM_Offset face, ELM_Offset vertex, int64_t corners) { closed_.append(face, vertex, corners); },
        [this](ELM_Offset polygon) { open_.append(polygon); });
}

void RQ_MSHPrimCollectPolyData::append(const MSH_Detail &detail, const ELM_Range &range, BAS_Progress &progress)
{
    closed_.gather(detail, range, open_, progress);
}

void RQ_MSHPrimCollectPolyData::append(RQ_MSHPrimCollectPolyData &following)
{
    following.closed_.finish();
    closed_.append(following.closed_);
    open_.concat(following.open_);
}

bool RQ_MSHPrimCollectPolyData::coversDetail(const MSH_Detail &detail) const
{
    return closed_.faces() == detail.primitiveCount() && closed_.vertices().entries() == detail.vertexCount() &&
           !detail.hasVacantOffsets(ELM_OWNER_POINT);
}

RQ_PrimitiveHandle RQ_MSHPrimCollectPolyData::makeMesh(const RQ_MSHDetailListHandle &details)
{
    closed_.finish();
    if (closed_.faces() == 0)
        return nullptr;
    const MSH_Detail &detail = *details->getDetail();
    // Every offset, vacant ones too: vertex lists hold offsets of points, and use them as rows.
    const RQ_MSHOffsetList points(ELM_OffsetList(0, detail.capacity(ELM_OWNER_POINT)));
    const RQ_MSHOffsetList &vertices = closed_.vertices();
    const RQ_PolygonMeshHandle mesh(new RQ_PrimPolygonMesh(
        closed_.counts(), vertices.createVertexPointArray(details->getHandle()),
        details->getPointAttributes(nullptr, points, parms_), details->getVertexAttributes(nullptr, vertices, parms_),
        details->getPrimitiveAttributes(nullptr, closed_.primitives(), parms_),
        details->getDetailAttributes(nullptr, parms_)));

    // A mesh that uses the whole detail keeps its points as they are: compacting would give up the host's memory for copies.
    if (coversDetail(detail) && (fastCompacting_ || !detail.hasUnusedPoints()))
        return mesh;
    return mesh->removeUnusedPoints();
}

RQ_MSHPrimCollectData *RQ_MSHPrimCollectPoly::beginCollecting(const RQ_MSHDetailListHandle &,
                                                              const RQ_RefineParms *parms) const
{
    return new RQ_MSHPrimCollectPolyData(parms);
}

RQ_PrimitiveHandle RQ_MSHPrimCollectPoly::collect(const RQ_MSHDetailListHandle &, const MSH_Primitive *const *primitives,
                                                  int, RQ_MSHPrimCollectData *data) const
{
    collectOne(data, primitives[0]->detail(), primitives[0]->offset());
    return nullptr;
}

void RQ_MSHPrimCollectPoly::collectOne(RQ_MSHPrimCollectData *data, const MSH_Detail &detail, ELM_Offset primitive) const
{
    static_cast<RQ_MSHPrimCollectPolyData *>(data)->append(detail, primitive);
}

void RQ_MSHPrimCollectPoly::collectAll(RQ_MSHPrimCollectData *data, const MSH_Detail &detail, const ELM_Range &range,
                                       const ELM_Group *skip) const
{
    BAS_Progress progress("Collecting polygons");
    static_cast<RQ_MSHPrimCollectPolyData *>(data)->append(detail, rq::selectPrimitives(range, nullptr, skip), progress);
}

void RQ_MSHPrimCollectPoly::mergeData(RQ_MSHPrimCollectData *into, RQ_MSHPrimCollectData *from) const
{
    static_cast<RQ_MSHPrimCollectPolyData *>(into)->append(*static_cast<RQ_MSHPrimCollectPolyData *>(from));
}

RQ_PrimitiveHandle RQ_MSHPrimCollectPoly::endCollecting(const RQ_MSHDetailListHandle &details,
                                                        RQ_MSHPrimCollectData *data) const
{
    auto &polygons = *static_cast<RQ_MSHPrimCollectPolyData *>(data);
    RQ_PrimitiveHandle mesh = polygons.makeMesh(details);
    if (mesh && polygons.getParms() && polygons.getParms()->getPolysAsSubdivision())
        mesh = RQ_PrimSubdivisionMesh::createWithStandardTags(static_cast<const RQ_PrimPolygonMesh &>(*mesh));
    const RQ_MSHOffsetList &open = polygons.getOpenPolygons();
    if (open.entries() == 0)
        return mesh;
    BAS_IntrusivePtr<RQ_PrimCollect> all(new RQ_PrimCollect);
    if (mesh)
        all->appendPrimitive(mesh);
    for (int64_t i = 0; i < open.entries(); ++i)
        all->appendPrimitive(new RQ_MSHPrimitive(details, open[i], polygons.getParms()));
    return all->entries() == 1 ? all->getPrim(0) : RQ_PrimitiveHandle(all);
}

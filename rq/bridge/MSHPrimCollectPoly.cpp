#include <rq/bridge/MSHPrimCollectPoly.h>

#include <algorithm>

#include <host/elm/PrimitiveFactory.h>
#include <host/msh/Detail.h>
#include <rq/bridge/MSHPrimitive.h>
#include <rq/data/DANumeric.h>
#include <rq/prim/PrimCollect.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace
{
bool hasAllPoints(const MSH_Detail &detail, const MSH_Detail::VertexRun &run)
{
    if (detail.topologyIsValid())
        return true;
    for (int64_t i = 0; i < run.count; ++i)
        if (detail.vertexPoint(run.start + i) < 0)
            return false;
    return true;
}
}  // namespace

RQ_MSHPrimCollectPolyData::RQ_MSHPrimCollectPolyData(const RQ_RefineParms *parms)
    : parms_(parms), fastCompacting_(RQ_RefineParms::getFastPolyCompacting(parms))
{}

RQ_MSHPrimCollectPolyData::~RQ_MSHPrimCollectPolyData() = default;

void RQ_MSHPrimCollectPolyData::append(const MSH_Detail &detail, ELM_Offset primitive)
{
    const MSH_Detail::VertexRun run = detail.vertexRun(primitive);
    if (!hasAllPoints(detail, run))
        return;
    if (detail.isClosed(primitive))
        appendFaces(primitive, 1, run.start, run.count);
    else
        open_.append(primitive);
}

void RQ_MSHPrimCollectPolyData::appendFaces(ELM_Offset firstPrimitive, int64_t primitives, ELM_Offset firstVertex,
                                            int64_t verticesEach)
{
    const bool wasUniform = counts_.empty();
    if (faces_ > 0 && wasUniform && verticesEach != maxCount_)
        counts_.assign(size_t(faces_), int32_t(maxCount_));
    minCount_ = faces_ > 0 ? std::min(minCount_, verticesEach) : verticesEach;
    maxCount_ = faces_ > 0 ? std::max(maxCount_, verticesEach) : verticesEach;
    faces_ += primitives;
    if (!counts_.empty())
        counts_.resize(size_t(faces_), int32_t(verticesEach));
    primitives_.concat(RQ_MSHOffsetList(ELM_OffsetList(firstPrimitive, primitives)));
    vertices_.concat(RQ_MSHOffsetList(ELM_OffsetList(firstVertex, primitives * verticesEach)));
}

RQ_CountArray RQ_MSHPrimCollectPolyData::faceCounts() const
{
    RQ_CountArray counts;
    if (counts_.empty())
        counts.init(faces_, maxCount_);
    else
        counts.init(new RQ_DANumeric<int32_t>(counts_.data(), faces_, 1, RQ_TYPE_NONE), minCount_, maxCount_);
    return counts;
}

bool RQ_MSHPrimCollectPolyData::coversDetail(const MSH_Detail &detail) const
{
    return faces_ == detail.primitiveCount() && vertices_.entries() == detail.vertexCount() &&
           !detail.hasVacantOffsets(ELM_OWNER_POINT);
}

RQ_PrimitiveHandle RQ_MSHPrimCollectPolyData::makeMesh(const RQ_MSHDetailListHandle &details) const
{
    if (faces_ == 0)
        return nullptr;
    const MSH_Detail &detail = *details->getDetail();
    const RQ_MSHOffsetList points(detail, ELM_OWNER_POINT);
    const RQ_PolygonMeshHandle mesh(new RQ_PrimPolygonMesh(
        faceCounts(), vertices_.createVertexPointArray(details->getHandle()),
        details->getPointAttributes(nullptr, points, parms_), details->getVertexAttributes(nullptr, vertices_, parms_),
        details->getPrimitiveAttributes(nullptr, primitives_, parms_), details->getDetailAttributes(nullptr, parms_)));

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
    auto &polygons = *static_cast<RQ_MSHPrimCollectPolyData *>(data);
    const auto isFace = [&](ELM_Offset primitive) {
        return detail.typeOf(primitive) == ELM_PRIMITIVE_POLYGON && detail.isClosed(primitive) &&
               !(skip && skip->contains(primitive)) && detail.topologyIsValid();
    };
    for (const auto [begin, end] : range.blocks())
        for (ELM_Offset primitive = begin; primitive < end;)
        {
            // Faces of equal size whose vertices follow each other are one run.
            const MSH_Detail::VertexRun first = detail.vertexRun(primitive);
            ELM_Offset next = primitive;
            while (next < end && isFace(next))
            {
                const MSH_Detail::VertexRun run = detail.vertexRun(next);
                if (run.count != first.count || run.start != first.start + (next - primitive) * first.count)
                    break;
                ++next;
            }
            if (next > primitive)
                polygons.appendFaces(primitive, next - primitive, first.start, first.count);
            else if (detail.typeOf(next) == ELM_PRIMITIVE_POLYGON && !(skip && skip->contains(next)))
                polygons.append(detail, next);
            primitive = std::max(next, primitive + 1);
        }
}

RQ_PrimitiveHandle RQ_MSHPrimCollectPoly::endCollecting(const RQ_MSHDetailListHandle &details,
                                                        RQ_MSHPrimCollectData *data) const
{
    const auto &polygons = *static_cast<const RQ_MSHPrimCollectPolyData *>(data);
    const RQ_PrimitiveHandle mesh = polygons.makeMesh(details);
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

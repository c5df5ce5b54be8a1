#include <rq/bridge/MSHPrimMetaBall.h>

#include <algorithm>

#include <rq/bridge/detail/BlobField.h>
#include <rq/bridge/detail/PlacedPrimitives.h>
#include <rq/bridge/detail/blendAttributes.h>
#include <rq/bridge/detail/moveWithBlobs.h>
#include <rq/prim/PrimitiveJSON.h>
#include <rq/prim/PrimitiveType.h>
#include <rq/surface/detail/isoSurface.h>
#include <rq/surface/detail/levelOptions.h>
#include <rq/surface/detail/lists.h>

namespace
{
/// Those of the metaballs that have a shape.
RQ_MSHOffsetList blobsAmong(const MSH_Detail &detail, const RQ_MSHOffsetList &metaballs)
{
    RQ_MSHOffsetList blobs;
    for (int64_t i = 0; i < metaballs.entries(); ++i)
        if (!MSH_Meta(detail, metaballs[i]).isExpression())
            blobs.append(metaballs[i]);
    return blobs;
}
}  // namespace

RQ_MSHPrimMetaBall::RQ_MSHPrimMetaBall(const RQ_MSHDetailList &details, const RQ_MSHOffsetList &metaballs,
                                       const RQ_RefineParms *parms)
    : tree_(rq::BlobTree::make(*details.getDetail(), metaballs))
{
    const RQ_MSHOffsetList blobs = blobsAmong(*details.getDetail(), metaballs);
    transforms_ = rq::placementsOf(details, blobs);
    if (blobs.entries() > 0)
        vertex_ = rq::attributesOfPlaced(details, blobs, parms);
    detail_ = details.getDetailAttributes(nullptr, parms);
}

RQ_MSHPrimMetaBall::RQ_MSHPrimMetaBall(const RQ_MSHPrimMetaBall &other) = default;
RQ_MSHPrimMetaBall::~RQ_MSHPrimMetaBall() = default;

RQ_PolygonMeshHandle RQ_MSHPrimMetaBall::refineToPolygonMesh(const RQ_RefineParms *parms) const
{
    rq::BlobField field(*tree_, *transforms_);
    if (!field.layGrid(RQ_RefineParms::getMetaDensity(parms) * RQ_RefineParms::getLOD(parms),
                       RQ_RefineParms::getMetaMaxDivs(parms)))
        return nullptr;
    bool isTooLarge = false;
    rq::IsoSurface surface;
    do
        surface = rq::makeIsoSurface(field, field.grid(), isTooLarge);
    while (isTooLarge && field.coarsen());
    if (!surface.mesh)
        return nullptr;
    RQ_AttributeListHandle shared =
        surface.mesh->getShared()->mergeNewAttributes(rq::blendAttributes(field, surface, vertex_));
    if (transforms_->getMotionSegments() > 1)
    {
        const std::vector<RQ_DataArrayHandle> moved = rq::moveWithBlobs(field, surface, *transforms_);
        shared = shared->addAttribute("P", moved.data(), int(moved.size()), true);
    }
    return new RQ_PrimPolygonMesh(*surface.mesh, shared, nullptr, nullptr, detail_);
}

const char *RQ_MSHPrimMetaBall::className() const { return "RQ_MSHPrimMetaBall"; }
int RQ_MSHPrimMetaBall::getPrimitiveType() const { return RQ_PRIM_META_BALL; }

void RQ_MSHPrimMetaBall::enlargeBounds(BAS_BoundingBox *boxes, int segments) const
{
    for (int segment = 0; segment < segments; ++segment)
    {
        BAS_Mat4d base;
        if (getPrimitiveTransform())
            getPrimitiveTransform()->getMatrix(base, segment);
        for (const rq::BlobNode &node : tree_->nodes)
        {
            if (node.isExpression())
                continue;
            BAS_Mat4d matrix;
            transforms_->getMatrix(matrix, node.placement, segment);
            const rq::BlobShape shape(node.type, node.blob, matrix * base);
            if (!shape.isThere() || shape.weight() <= 0.0)
                continue;
            boxes[segment].enlarge(BAS_Vec3f(shape.middle() - shape.halfSize()));
            boxes[segment].enlarge(BAS_Vec3f(shape.middle() + shape.halfSize()));
        }
    }
}

bool RQ_MSHPrimMetaBall::refine(RQ_Refine &sink, const RQ_RefineParms *parms) const
{
    if (const RQ_PolygonMeshHandle mesh = refineToPolygonMesh(parms))
    {
        mesh->refineCopyTransformFrom(*this);
        sink.addPrimitive(mesh);
    }
    return true;
}

const RQ_ViewportRefineOptions &RQ_MSHPrimMetaBall::viewportRefineOptions() const { return rq::levelRefineOptions(); }

int RQ_MSHPrimMetaBall::getMotionSegments() const
{
    return std::max(rq::motionSegments(*this, {&vertex_, &detail_}), transforms_->getMotionSegments());
}

int64_t RQ_MSHPrimMetaBall::getMemoryUsage() const
{
    return int64_t(sizeof(*this)) + tree_->memoryUsage() + transforms_->getMemoryUsage() +
           rq::memoryUsage({&vertex_, &detail_});
}

bool RQ_MSHPrimMetaBall::save(BAS_JSONWriter &writer) const
{
    const jsonWriter record(writer, RQprimitiveType(RQ_PRIM_META_BALL));
    return tree_->save(*record) && transforms_->save(*record) && saveAttributeLists(*record);
}

RQ_PrimitiveHandle RQ_MSHPrimMetaBall::doHarden() const
{
    const BAS_IntrusivePtr<RQ_MSHPrimMetaBall> copy(new RQ_MSHPrimMetaBall(*this));
    rq::hardenLists({&copy->vertex_, &copy->detail_});
    copy->dropDataIdHash();
    return copy;
}

RQ_PrimitiveHandle RQ_MSHPrimMetaBall::doSoftCopy() const { return new RQ_MSHPrimMetaBall(*this); }

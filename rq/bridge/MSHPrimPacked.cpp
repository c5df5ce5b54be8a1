#include <rq/bridge/MSHPrimPacked.h>

#include <algorithm>

#include <host/bas/Diagnostics.h>
#include <host/bas/StringMMPattern.h>
#include <host/mod/PackedGeometry.h>
#include <rq/bridge/MSHDetail.h>
#include <rq/bridge/MSHPrimCollectBoxes.h>
#include <rq/bridge/detail/PlacedPrimitives.h>
#include <rq/bridge/detail/packedLevels.h>
#include <rq/bridge/detail/packedPlacements.h>
#include <rq/data/DANumeric.h>
#include <rq/prim/PrimCollect.h>
#include <rq/prim/PrimitiveType.h>
#include <rq/prim/ViewportRefineOptions.h>
#include <rq/surface/PrimPointMesh.h>
#include <rq/surface/PrimSubdivisionMesh.h>

namespace
{
constexpr int64_t kFull = -1, kGreatestLevel = 6;

RQ_MSHOffsetList listOf(ELM_Offset offset) { return RQ_MSHOffsetList(ELM_OffsetList(offset, 1)); }

RQ_DataArrayHandle numberOf(ELM_Offset offset)
{
    const int64_t value = offset;
    return new RQ_DANumeric<int64_t>(&value, 1);
}

RQ_PrimitiveHandle asSubdivision(const RQ_PrimitiveHandle &geometry)
{
    const auto *mesh = dynamic_cast<const RQ_PrimPolygonMesh *>(geometry.get());
    if (!mesh || dynamic_cast<const RQ_PrimSubdivisionMesh *>(mesh))
        return geometry;
    return RQ_PrimSubdivisionMesh::createWithStandardTags(*mesh);
}
}  // namespace

RQ_MSHPrimPacked::RQ_MSHPrimPacked(const RQ_MSHDetailListHandle &details, ELM_Offset offset, bool transformed)
    : details_(details), packed_(*details->getDetail(), offset), transformed_(transformed),
      viewportLOD_(packed_.viewportLOD())
{}

RQ_MSHPrimPacked::RQ_MSHPrimPacked(const MOD_ConstDetailHandle &detail, ELM_Offset offset, bool transformed)
    : RQ_MSHPrimPacked(std::make_shared<RQ_MSHDetailList>(detail), offset, transformed)
{}

RQ_MSHPrimPacked::RQ_MSHPrimPacked(const RQ_MSHPrimPacked &) = default;
RQ_MSHPrimPacked::~RQ_MSHPrimPacked() = default;
RQ_MSHPrimPackedShared::~RQ_MSHPrimPackedShared() = default;

const char *RQ_MSHPrimPacked::className() const { return "RQ_MSHPrimPacked"; }
int RQ_MSHPrimPacked::getPrimitiveType() const { return RQ_PRIM_MSH_PACKED; }
RQ_PrimitiveHandle RQ_MSHPrimPacked::doSoftCopy() const { return new RQ_MSHPrimPacked(*this); }
RQ_PrimitiveHandle RQ_MSHPrimPackedShared::doSoftCopy() const { return new RQ_MSHPrimPackedShared(*this); }

bool RQ_MSHPrimPacked::useViewportLOD(const RQ_RefineParms *parms)
{
    return parms && uint64_t(parms->getOverridePackedViewportLOD()) > uint64_t(kGreatestLevel) &&
           parms->getPackedViewportLOD();
}

int64_t RQ_MSHPrimPacked::levelFor(const RQ_RefineParms *parms) const
{
    if (!parms)
        return kFull;
    const int64_t override = parms->getOverridePackedViewportLOD();
    if (override <= kGreatestLevel)
        return override;
    return parms->getPackedViewportLOD() ? viewportLOD_ : kFull;
}

RQ_PrimitiveHandle RQ_MSHPrimPacked::geometryAt(int64_t level, const RQ_RefineParms *parms) const
{
    const auto wanted = [parms](const RQ_PrimitiveHandle &made) {
        return parms && parms->getPolysAsSubdivision() ? asSubdivision(made) : made;
    };
    switch (level)
    {
    case rq::kPackedNothing:
        return nullptr;
    case rq::kPackedCentroid:
        return getCentroidGeometry(parms);
    case rq::kPackedBox:
        return wanted(getBoxGeometry(parms));
    case rq::kPackedPoints:
        return copyPackedAttributesToGeometry(getPointCloud(parms));
    default:
        return copyPackedAttributesToGeometry(wanted(getFullGeometry(parms)));
    }
}

void RQ_MSHPrimPacked::geometryAndTransform(RQ_PrimitiveHandle &geometry, RQ_TransformHandle &transform,
                                            const RQ_RefineParms *parms) const
{
    geometry = geometryAt(levelFor(parms), parms);
    transform = geometry && transformed_ ? getInstanceTransform() : nullptr;
}

bool RQ_MSHPrimPacked::refine(RQ_Refine &sink, const RQ_RefineParms *parms) const
{
    RQ_PrimitiveHandle geometry;
    RQ_TransformHandle transform;
    geometryAndTransform(geometry, transform, parms);
    if (geometry)
        sink.addPrimitive(geometry->copyTransformed(transform)->copyTransformed(getPrimitiveTransform()));
    return geometry || levelFor(parms) == rq::kPackedNothing || getPackedDetail();
}

MOD_ConstDetailHandle RQ_MSHPrimPacked::getPackedDetail() const
{
    std::string why;
    const MOD_ConstDetailHandle detail = packed_.unpack(why);
    if (!detail)
        BAS_Diagnostics::warn("packed geometry is missing: " + why);
    return detail;
}

RQ_PrimitiveHandle RQ_MSHPrimPacked::buildUntransformedFragment() const
{
    const auto *fragment = dynamic_cast<const MOD_PackedFragment *>(&getImplementation());
    if (!fragment)
        return nullptr;
    return RQ_MSHDetail::makeDetail(MOD_ConstDetailHandle(fragment->data.detail[0].get()),
                                    std::make_shared<ELM_Range>(fragment->data.range()));
}

RQ_PrimitiveHandle RQ_MSHPrimPacked::getInstanceGeometry() const
{
    if (const RQ_PrimitiveHandle fragment = buildUntransformedFragment())
        return fragment;
    const MOD_ConstDetailHandle detail = getPackedDetail();
    return detail ? RQ_MSHDetail::makeDetail(detail) : nullptr;
}

RQ_PrimitiveHandle RQ_MSHPrimPacked::getFullGeometry(const RQ_RefineParms *parms) const
{
    return refinePrimitive(getInstanceGeometry(), parms);
}

RQ_PrimitiveHandle RQ_MSHPrimPacked::getPointCloud(const RQ_RefineParms *) const
{
    std::string why;
    const MOD_ConstDetailHandle points = packed_.pointCloud(why);
    return points ? RQ_MSHDetail::makePointMesh(points) : nullptr;
}

RQ_PrimitiveHandle RQ_MSHPrimPacked::getBoxGeometry(const RQ_RefineParms *) const
{
    RQ_MSHPrimCollectBoxes one;
    one.appendBox(packed_.bounds(), BAS_Mat4d(), packed_.offset(), packed_.vertexOrNone(), packed_.pointOrNone());
    return one.getBoxes();
}

RQ_PrimitiveHandle RQ_MSHPrimPacked::getCentroidGeometry(const RQ_RefineParms *) const
{
    RQ_MSHPrimCollectBoxes one;
    one.appendCentroid(packed_.bounds(), BAS_Mat4d(), packed_.offset(), packed_.vertexOrNone(), packed_.pointOrNone());
    return one.getCentroids();
}

void RQ_MSHPrimPacked::createPointPrimIDs()
{
    primitiveIds_ = numberOf(packed_.offset());
    pointIds_ = numberOf(packed_.pointOrNone());
}

void RQ_MSHPrimPacked::appendAttribute(RQ_AttributeListHandle &list, const BAS_StringHolder &name,
                                       const RQ_DataArrayHandle &array)
{
    if (array)
        list = (list ? list : RQ_AttributeListHandle(new RQ_AttributeList(nullptr)))->addAttribute(name, array, false);
}

RQ_PrimitiveHandle RQ_MSHPrimPacked::copyPackedAttributesToGeometry(const RQ_PrimitiveHandle &geometry) const
{
    if (const auto *several = dynamic_cast<const RQ_PrimCollect *>(geometry.get()))
    {
        const BAS_IntrusivePtr<RQ_PrimCollect> all(new RQ_PrimCollect);
        for (int64_t i = 0; i < several->entries(); ++i)
            all->appendPrimitive(copyPackedAttributesToGeometry(several->getPrim(i)));
        all->setPrimitiveTransform(several->getPrimitiveTransform());
        return all;
    }
    RQ_AttributeListHandle list = getInstanceAttributes();
    appendAttribute(list, "__primitive_id", primitiveIds_);
    appendAttribute(list, "__point_id", pointIds_);
    if (!geometry || !list)
        return geometry;
    BAS_Array<BAS_StringHolder> taken;
    for (int64_t i = 0; i < list->entries(); ++i)
        if (RQ_Owner owner; geometry->findAttribute(list->getName(i), owner, 0))
            taken.push_back(list->getName(i));
    const RQ_PrimPointMesh carrier(nullptr, list->removeAttributes(taken));
    const BAS_StringMMPattern all("*");
    return geometry->attributeMerge(carrier, nullptr, nullptr, nullptr, &all);
}

bool RQ_MSHPrimPacked::canInstance() const { return false; }
bool RQ_MSHPrimPacked::getInstanceKey(BAS_Options &key) const { return packed_.instanceKey(key); }

RQ_AttributeListHandle RQ_MSHPrimPacked::getInstanceAttributes() const
{
    return rq::attributesOfPlaced(RQ_MSHDetailList(details_->getHandle()), listOf(packed_.offset()), nullptr);
}

void RQ_MSHPrimPacked::getFullTransform(BAS_Mat4d &matrix, int segment) const
{
    matrix = rq::packedPlacement(*details_, packed_.offset(), segment);
}

void RQ_MSHPrimPacked::getViewportTransform(BAS_Mat4d &matrix, int segment) const
{
    matrix = BAS_Mat4d();
    if (transformed_)
        getFullTransform(matrix, segment);
    if (getPrimitiveTransform())
    {
        BAS_Mat4d outer;
        getPrimitiveTransform()->getMatrix(outer, segment);
        matrix *= outer;
    }
}

RQ_TransformHandle RQ_MSHPrimPacked::getInstanceTransform() const
{
    std::vector<BAS_Mat4d> matrices(static_cast<size_t>(getMotionSegments()));
    for (size_t segment = 0; segment < matrices.size(); ++segment)
        getFullTransform(matrices[segment], int(segment));
    return RQ_TransformHandle(new RQ_Transform(matrices.data(), int(matrices.size())));
}

int RQ_MSHPrimPacked::getMotionSegments() const { return std::max(1, details_->getSegments()); }

const RQ_MSHPrimPacked::Lists &RQ_MSHPrimPacked::lists() const
{
    return lists_.getOrBuild([this] {
        const BAS_IntrusivePtr<Lists> made(new Lists);
        made->uniform = details_->getPrimitiveAttributes(nullptr, listOf(packed_.offset()));
        made->vertex = details_->createPrimitiveVertex(nullptr, packed_.offset());
        if (packed_.pointOrNone() >= 0)
            made->point = details_->getPointAttributes(nullptr, listOf(packed_.pointOrNone()));
        return BAS_IntrusivePtr<const Lists>(made);
    });
}

const RQ_AttributeListHandle &RQ_MSHPrimPacked::getPointAttributes() const { return lists().point; }
const RQ_AttributeListHandle &RQ_MSHPrimPacked::getVertexAttributes() const { return lists().vertex; }
const RQ_AttributeListHandle &RQ_MSHPrimPacked::getUniformAttributes() const { return lists().uniform; }

const RQ_ViewportRefineOptions &RQ_MSHPrimPacked::viewportRefineOptions() const
{
    static const RQ_ViewportRefineOptions kChanges = [] {
        RQ_ViewportRefineOptions options;
        options.setChangesWithLOD(true);
        return options;
    }();
    return kChanges;
}

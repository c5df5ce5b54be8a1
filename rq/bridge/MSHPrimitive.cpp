#include <rq/bridge/MSHPrimitive.h>

#include <host/bas/JSONWriter.h>
#include <host/elm/PrimitiveFactory.h>
#include <host/msh/Detail.h>
#include <rq/prim/PrimitiveJSON.h>
#include <rq/prim/PrimitiveType.h>

RQ_MSHPrimitive::RQ_MSHPrimitive(const RQ_MSHDetailListHandle &details, ELM_Offset offset, const RQ_RefineParms *parms)
    : details_(details), offset_(offset)
{
    const RQ_MSHOffsetList vertices(details->getDetail()->vertices(offset));
    const RQ_MSHOffsetList points = RQ_MSHOffsetList::pointFromVertex(details->getHandle(), vertices);
    const RQ_MSHOffsetList self(ELM_OffsetList(offset, 1));
    vertex_ = details->getVertexAttributes(nullptr, vertices, parms);
    // A vertex without a point has no position to show.
    bool complete = true;
    for (int64_t i = 0; i < points.entries(); ++i)
        complete = complete && points[i] >= 0;
    if (complete)
        point_ = details->getPointAttributes(nullptr, points, parms);
    uniform_ = details->getPrimitiveAttributes(nullptr, self, parms);
}

RQ_MSHPrimitive::RQ_MSHPrimitive(const RQ_MSHPrimitive &other) = default;
RQ_MSHPrimitive::~RQ_MSHPrimitive() = default;

ELM_PrimitiveTypeId RQ_MSHPrimitive::getHostType() const { return details_->getDetail()->typeOf(offset_); }
bool RQ_MSHPrimitive::isClosed() const { return details_->getDetail()->isClosed(offset_); }
int64_t RQ_MSHPrimitive::getVertexCount() const { return details_->getDetail()->vertexRun(offset_).count; }

const char *RQ_MSHPrimitive::className() const { return "RQ_MSHPrimitive"; }
int RQ_MSHPrimitive::getPrimitiveType() const { return RQ_PRIM_MSH_PRIMITIVE; }
void RQ_MSHPrimitive::enlargeBounds(BAS_BoundingBox *boxes, int segments) const { enlargeP(boxes, segments, point_); }
bool RQ_MSHPrimitive::refine(RQ_Refine &, const RQ_RefineParms *) const { return false; }
int RQ_MSHPrimitive::getMotionSegments() const { return details_->getSegments(); }

int64_t RQ_MSHPrimitive::getMemoryUsage() const
{
    int64_t bytes = int64_t(sizeof(*this));
    for (const RQ_AttributeListHandle *list : {&point_, &vertex_, &uniform_})
        bytes += *list ? (*list)->getMemoryUsage() : 0;
    return bytes;
}

bool RQ_MSHPrimitive::save(BAS_JSONWriter &writer) const
{
    const jsonWriter record(writer, RQprimitiveType(RQ_PRIM_MSH_PRIMITIVE));
    const ELM_PrimitiveDefinition *type = ELM_PrimitiveFactory::find(getHostType());
    return record->writeString(type ? type->name.view() : "") && record->writeBool(isClosed()) &&
           saveAttributeLists(*record);
}

RQ_PrimitiveHandle RQ_MSHPrimitive::doSoftCopy() const { return new RQ_MSHPrimitive(*this); }

#include <rq/surface/PrimNet.h>

#include <rq/prim/PrimitiveJSON.h>
#include <rq/prim/PrimitiveType.h>
#include <rq/surface/detail/levelOptions.h>
#include <rq/surface/detail/lists.h>

RQ_PrimNet::RQ_PrimNet() = default;
RQ_PrimNet::RQ_PrimNet(const RQ_PrimNet &other) = default;
RQ_PrimNet::~RQ_PrimNet() = default;

void RQ_PrimNet::setLists(const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform,
                          const RQ_AttributeListHandle &detail)
{
    vertex_ = vertex;
    uniform_ = uniform;
    detail_ = detail;
    dropDataIdHash();
}

RQ_AttributeListHandle RQ_PrimNet::wholeAttributes() const
{
    return uniform_ ? uniform_->mergeNewAttributes(detail_) : detail_;
}

bool RQ_PrimNet::handOver(const RQ_PrimitiveHandle &made, RQ_Refine &sink) const
{
    if (!made)
        return false;
    made->refineCopyTransformFrom(*this);
    sink.addPrimitive(made);
    return true;
}

void RQ_PrimNet::enlargeBounds(BAS_BoundingBox *boxes, int segments) const { enlargeP(boxes, segments, vertex_); }

int RQ_PrimNet::getMotionSegments() const { return rq::motionSegments(*this, {&vertex_, &uniform_, &detail_}); }

int64_t RQ_PrimNet::getMemoryUsage() const
{
    return int64_t(sizeof(*this)) + rq::memoryUsage({&vertex_, &uniform_, &detail_});
}

bool RQ_PrimNet::save(BAS_JSONWriter &writer) const
{
    const jsonWriter record(writer, RQprimitiveType(getPrimitiveType()));
    return saveShape(*record) && saveAttributeLists(*record);
}

const RQ_ViewportRefineOptions &RQ_PrimNet::viewportRefineOptions() const { return rq::levelRefineOptions(); }

RQ_PrimitiveHandle RQ_PrimNet::doHarden() const
{
    const BAS_IntrusivePtr<RQ_PrimNet> copy(static_cast<RQ_PrimNet *>(doSoftCopy().get()));
    rq::hardenLists({&copy->vertex_, &copy->uniform_, &copy->detail_});
    copy->dropDataIdHash();
    return copy;
}

RQ_PrimitiveHandle RQ_PrimNet::doAttributeMerge(const RQ_Primitive &source, const BAS_StringMMPattern *vertex,
                                                const BAS_StringMMPattern *point, const BAS_StringMMPattern *uniform,
                                                const BAS_StringMMPattern *detail) const
{
    const rq::MergedLists merged(*this, source, vertex, point, uniform, detail);
    if (!merged.changed)
        return const_cast<RQ_PrimNet *>(this);
    const BAS_IntrusivePtr<RQ_PrimNet> copy(static_cast<RQ_PrimNet *>(doSoftCopy().get()));
    copy->setLists(merged.vertex, merged.uniform, merged.detail);
    return copy;
}

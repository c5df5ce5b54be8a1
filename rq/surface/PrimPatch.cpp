#include <rq/surface/PrimPatch.h>

#include <rq/prim/PrimitiveType.h>

RQ_PrimPatch::RQ_PrimPatch() = default;
RQ_PrimPatch::RQ_PrimPatch(const RQ_PrimPatch &other) = default;
RQ_PrimPatch::~RQ_PrimPatch() = default;

bool RQ_PrimPatch::init(const RQ_NetDirection &u, const RQ_NetDirection &v, const RQ_AttributeListHandle &vertex,
                        const RQ_AttributeListHandle &uniform, const RQ_AttributeListHandle &detail)
{
    const auto isOneSpan = [](const RQ_NetDirection &direction) {
        return direction.vertices == direction.order && !direction.wraps;
    };
    return isOneSpan(u) && isOneSpan(v) && RQ_PrimTensorPatch::init(u, v, vertex, uniform, detail);
}

const char *RQ_PrimPatch::className() const { return "RQ_PrimPatch"; }
int RQ_PrimPatch::getPrimitiveType() const { return RQ_PRIM_PATCH; }
RQ_PrimitiveHandle RQ_PrimPatch::doSoftCopy() const { return new RQ_PrimPatch(*this); }

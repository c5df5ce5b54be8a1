#include <rq/prim/PrimitiveType.h>
#include <rq/prim/RefineCollect.h>

namespace
{
RQ_PrimitiveHandle refineOnce(const RQ_Primitive &primitive, const RQ_RefineParms *parms)
{
    RQ_RefineCollect sink;
    primitive.refine(sink, parms);
    if (sink.entries() == 1)
        return sink.getPrim(0);

    // A collection that hands out its own children again would go on like this for ever.
    const bool isCollection = primitive.getPrimitiveType() == RQ_PRIM_COLLECT;
    const auto *collection = isCollection ? dynamic_cast<const RQ_PrimCollect *>(&primitive) : nullptr;
    const bool sameAgain = collection && collection->entries() == sink.entries();
    return sameAgain || sink.entries() < 2 ? RQ_PrimitiveHandle() : sink.getPrim();
}
}  // namespace

RQ_PrimitiveHandle RQ_Primitive::refinePrimitive(const RQ_PrimitiveHandle &primitive, const RQ_RefineParms *parms)
{
    if (!primitive)
        return {};
    const RQ_PrimitiveHandle result = refineOnce(*primitive, parms);
    if (result && primitive->isFrameInfoAvailable() && !result->isFrameInfoAvailable())
        result->setStaticGeometry(primitive->isStaticGeometry());
    return result;
}

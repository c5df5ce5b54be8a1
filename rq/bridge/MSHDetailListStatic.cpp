#include <host/msh/Primitive.h>
#include <rq/bridge/MSHDetailList.h>

namespace
{
RQ_MSHDetailList listOf(RQ_MSHDetailList::Details details)
{
    return RQ_MSHDetailList(std::vector<MOD_ConstDetailHandle>(details.begin(), details.end()));
}
}  // namespace

RQ_AttributeListHandle RQ_MSHDetailList::createDetailAttributes(const RQ_MSHAttributeFilter *filter, Details details,
                                                                const RQ_RefineParms *parms)
{
    return listOf(details).createDetail(filter, parms);
}

RQ_AttributeListHandle RQ_MSHDetailList::createPrimitiveAttributes(const RQ_MSHAttributeFilter *filter, Details details,
                                                                   Primitives primitives, const RQ_RefineParms *parms,
                                                                   RQ_MSHIncludeDetail detail)
{
    if (primitives.empty())
        return nullptr;
    return listOf(details).createPrimitive(filter, primitives[0]->offset(), parms, detail);
}

RQ_AttributeListHandle RQ_MSHDetailList::createPrimitiveVertexAttributes(const RQ_MSHAttributeFilter *filter,
                                                                         Details details, Primitives primitives,
                                                                         const RQ_RefineParms *parms,
                                                                         RQ_MSHIncludePoint point)
{
    if (primitives.empty())
        return nullptr;
    return listOf(details).createPrimitiveVertex(filter, primitives[0]->offset(), parms, point);
}

RQ_AttributeListHandle RQ_MSHDetailList::createVertexAttributes(const RQ_MSHAttributeFilter *filter, Details details,
                                                                Primitives primitives, const RQ_RefineParms *parms,
                                                                RQ_MSHIncludePoint point)
{
    if (primitives.empty())
        return nullptr;
    return listOf(details).createVertex(filter, primitives[0]->offset(), parms, point);
}

#include <rq/bridge/detail/builtInCollectors.h>

#include <host/elm/PrimitiveFactory.h>

const std::shared_ptr<const RQ_MSHPrimCollectPoly> &rq::builtInPolygonCollector()
{
    // Never destroyed, as the registry.
    static const auto *collector =
        new std::shared_ptr<const RQ_MSHPrimCollectPoly>(std::make_shared<RQ_MSHPrimCollectPoly>());
    return *collector;
}

std::unordered_map<ELM_PrimitiveTypeId, std::shared_ptr<const RQ_MSHPrimCollect>> rq::builtInCollectors()
{
    return {{ELM_PRIMITIVE_POLYGON, builtInPolygonCollector()}};
}

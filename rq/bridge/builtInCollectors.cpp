#include <rq/bridge/detail/builtInCollectors.h>

#include <host/elm/PrimitiveFactory.h>
#include <rq/bridge/MSHPrimCollectCurve.h>
#include <rq/bridge/MSHPrimCollectParticle.h>
#include <rq/bridge/MSHPrimCollectQuadric.h>
#include <rq/bridge/MSHPrimCollectTube.h>

const std::shared_ptr<const RQ_MSHPrimCollectPoly> &rq::builtInPolygonCollector()
{
    // Never destroyed, as the registry.
    static const auto *collector =
        new std::shared_ptr<const RQ_MSHPrimCollectPoly>(std::make_shared<RQ_MSHPrimCollectPoly>());
    return *collector;
}

std::unordered_map<ELM_PrimitiveTypeId, std::shared_ptr<const RQ_MSHPrimCollect>> rq::builtInCollectors()
{
    using Collectors = std::unordered_map<ELM_PrimitiveTypeId, std::shared_ptr<const RQ_MSHPrimCollect>>;
    static const auto curves = std::make_shared<RQ_MSHPrimCollectCurve>();
    static const auto *collectors = new Collectors{
        {ELM_PRIMITIVE_POLYGON, builtInPolygonCollector()},
        {ELM_PRIMITIVE_TRIANGLE_STRIP, builtInPolygonCollector()},
        {ELM_PRIMITIVE_TRIANGLE_FAN, builtInPolygonCollector()},
        {ELM_PRIMITIVE_SOUP, builtInPolygonCollector()},
        {ELM_PRIMITIVE_GRID, builtInPolygonCollector()},
        {ELM_PRIMITIVE_NURBS_CURVE, curves},
        {ELM_PRIMITIVE_BEZIER_CURVE, curves},
        {ELM_PRIMITIVE_CIRCLE, std::make_shared<RQ_MSHPrimCollectQuadric>(ELM_PRIMITIVE_CIRCLE)},
        {ELM_PRIMITIVE_SPHERE, std::make_shared<RQ_MSHPrimCollectQuadric>(ELM_PRIMITIVE_SPHERE)},
        {ELM_PRIMITIVE_TUBE, std::make_shared<RQ_MSHPrimCollectTube>()},
        {ELM_PRIMITIVE_PARTICLES, std::make_shared<RQ_MSHPrimCollectParticle>()},
    };
    return *collectors;
}

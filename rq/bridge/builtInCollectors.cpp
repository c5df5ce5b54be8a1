#include <rq/bridge/detail/builtInCollectors.h>

#include <host/elm/PrimitiveFactory.h>
#include <rq/bridge/MSHCollectPacked.h>
#include <rq/bridge/MSHPrimCollectChannel.h>
#include <rq/bridge/MSHPrimCollectCurve.h>
#include <rq/bridge/MSHPrimCollectHexahedron.h>
#include <rq/bridge/MSHPrimCollectMeta.h>
#include <rq/bridge/MSHPrimCollectParticle.h>
#include <rq/bridge/MSHPrimCollectQuadric.h>
#include <rq/bridge/MSHPrimCollectTetrahedron.h>
#include <rq/bridge/MSHPrimCollectTPSurf.h>
#include <rq/bridge/MSHPrimCollectTriBez.h>
#include <rq/bridge/MSHPrimCollectTube.h>
#include <rq/bridge/MSHPrimCollectVDB.h>
#include <rq/bridge/MSHPrimCollectVolume.h>

const std::shared_ptr<const RQ_MSHPrimCollectPoly> &rq::builtInPolygonCollector()
{
    // Never destroyed, as the registry.
    static const auto *collector =
        new std::shared_ptr<const RQ_MSHPrimCollectPoly>(std::make_shared<RQ_MSHPrimCollectPoly>());
    return *collector;
}

bool rq::gathersBatches(const RQ_MSHPrimCollect &collector)
{
    return &collector == builtInPolygonCollector().get() || dynamic_cast<const RQ_MSHPrimCollectTetrahedron *>(&collector) ||
           dynamic_cast<const RQ_MSHPrimCollectHexahedron *>(&collector);
}

namespace
{
using Collectors = std::unordered_map<ELM_PrimitiveTypeId, std::shared_ptr<const RQ_MSHPrimCollect>>;

const Collectors &collectorsOfFixedTypes()
{
    static const auto curves = std::make_shared<RQ_MSHPrimCollectCurve>();
    static const auto metaballs = std::make_shared<RQ_MSHPrimCollectMeta>();
    static const auto surfaces = std::make_shared<RQ_MSHPrimCollectTPSurf>();
    static const auto *collectors = new Collectors{
        {ELM_PRIMITIVE_POLYGON, rq::builtInPolygonCollector()},
        {ELM_PRIMITIVE_TRIANGLE_STRIP, rq::builtInPolygonCollector()},
        {ELM_PRIMITIVE_TRIANGLE_FAN, rq::builtInPolygonCollector()},
        {ELM_PRIMITIVE_SOUP, rq::builtInPolygonCollector()},
        {ELM_PRIMITIVE_GRID, rq::builtInPolygonCollector()},
        {ELM_PRIMITIVE_NURBS_CURVE, curves},
        {ELM_PRIMITIVE_BEZIER_CURVE, curves},
        {ELM_PRIMITIVE_NURBS_SURFACE, surfaces},
        {ELM_PRIMITIVE_BEZIER_SURFACE, surfaces},
        {ELM_PRIMITIVE_CIRCLE, std::make_shared<RQ_MSHPrimCollectQuadric>(ELM_PRIMITIVE_CIRCLE)},
        {ELM_PRIMITIVE_SPHERE, std::make_shared<RQ_MSHPrimCollectQuadric>(ELM_PRIMITIVE_SPHERE)},
        {ELM_PRIMITIVE_TUBE, std::make_shared<RQ_MSHPrimCollectTube>()},
        {ELM_PRIMITIVE_PARTICLES, std::make_shared<RQ_MSHPrimCollectParticle>()},
        {ELM_PRIMITIVE_TETRAHEDRON, std::make_shared<RQ_MSHPrimCollectTetrahedron>()},
        {ELM_PRIMITIVE_HEXAHEDRON, std::make_shared<RQ_MSHPrimCollectHexahedron>()},
        {ELM_PRIMITIVE_BLOB_ELLIPSOID, metaballs},
        {ELM_PRIMITIVE_BLOB_QUADRIC, metaballs},
        {ELM_PRIMITIVE_BLOB_CAPSULE, metaballs},
        {ELM_PRIMITIVE_BLOB_BOX, metaballs},
        {ELM_PRIMITIVE_BLOB_EXPRESSION, metaballs},
        {ELM_PRIMITIVE_VOLUME, std::make_shared<RQ_MSHPrimCollectVolume>()},
        {ELM_PRIMITIVE_SPARSE_VOLUME, std::make_shared<RQ_MSHPrimCollectVDB>()},
        {ELM_PRIMITIVE_TRIANGULAR_PATCH, std::make_shared<RQ_MSHPrimCollectTriBez>()},
        {ELM_PRIMITIVE_CHANNEL, std::make_shared<RQ_MSHPrimCollectChannel>()},
        {ELM_PRIMITIVE_PACKED_GEOMETRY, std::make_shared<RQ_MSHCollectPackedGeometry>()},
        {ELM_PRIMITIVE_PACKED_FRAGMENT, std::make_shared<RQ_MSHCollectPackedFragment>()},
        {ELM_PRIMITIVE_PACKED_DISK, std::make_shared<RQ_MSHCollectPackedDisk>()},
        {ELM_PRIMITIVE_PACKED_DISK_SEQUENCE, std::make_shared<RQ_MSHCollectPackedSequence>()},
        {ELM_PRIMITIVE_PACKED_AGENT, std::make_shared<RQ_MSHCollectPackedAgent>()},
    };
    return *collectors;
}
}  // namespace

std::unordered_map<ELM_PrimitiveTypeId, std::shared_ptr<const RQ_MSHPrimCollect>> rq::builtInCollectors()
{
    Collectors all = collectorsOfFixedTypes();
    // Applications may have added packed types of their own.
    static const auto packed = std::make_shared<const RQ_MSHPrimCollectPacked>();
    for (int64_t i = 0; i < ELM_PrimitiveFactory::count(); ++i)
        if (const ELM_PrimitiveDefinition *type = ELM_PrimitiveFactory::at(i); type->isPacked)
            all.try_emplace(type->id, packed);
    return all;
}

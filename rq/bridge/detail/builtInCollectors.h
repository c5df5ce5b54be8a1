#pragma once

#include <unordered_map>

#include <rq/bridge/MSHPrimCollectPoly.h>

namespace rq
{
/// The collectors that the library has by itself, by host type: always the same objects.  A collector of several types is
/// one object.
std::unordered_map<ELM_PrimitiveTypeId, std::shared_ptr<const RQ_MSHPrimCollect>> builtInCollectors();

/// The one of polygons, which can be given many at once.
const std::shared_ptr<const RQ_MSHPrimCollectPoly> &builtInPolygonCollector();
}  // namespace rq

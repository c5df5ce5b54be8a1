#pragma once

#include <unordered_map>

#include <rq/bridge/MSHPrimCollectPoly.h>

namespace rq
{
/// The collectors that the library has by itself, by host type: always the same objects.  A collector of several types is
/// one object.
std::unordered_map<ELM_PrimitiveTypeId, std::shared_ptr<const RQ_MSHPrimCollect>> builtInCollectors();

/// Whether a collector's data is `BatchData`.
bool gathersBatches(const RQ_MSHPrimCollect &collector);

/// The one of polygons.
const std::shared_ptr<const RQ_MSHPrimCollectPoly> &builtInPolygonCollector();
}  // namespace rq

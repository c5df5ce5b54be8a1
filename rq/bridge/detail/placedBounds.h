#pragma once

#include <host/elm/Range.h>
#include <rq/bridge/MSHDetailList.h>
#include <rq/prim/Transform.h>

class BAS_BoundingBox;

namespace rq
{
/// Enlarge a box for each segment by the circles, spheres, tubes, blobs, volumes and packed geometry among some primitives,
/// whose points are only where they stand.  `placement` (may be null) comes after their own.
void enlargeByPlaced(BAS_BoundingBox *boxes, int segments, const RQ_MSHDetailListHandle &details,
                     const ELM_Range &primitives, const RQ_TransformHandle &placement);
}  // namespace rq

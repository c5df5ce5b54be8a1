#pragma once

#include <host/bas/BoundingBox.h>
#include <rq/prim/Primitive.h>

namespace rq::offline
{
/// The box around a primitive in all segments of its motion, and around its points that lie somewhere when that is infinite.
BAS_BoundingBox finiteBounds(const RQ_Primitive &primitive);

/// From what a box holds to the unit sphere around the origin; nothing is moved for an empty box.
BAS_Mat4d unitPlacement(const BAS_BoundingBox &box);

/// Whether 32-bit floats tell places in the box apart as well as they could near the origin.
bool isWellPlaced(const BAS_BoundingBox &box);
}  // namespace rq::offline

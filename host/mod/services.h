#pragma once

#include <host/bas/BoundingBox.h>
#include <host/mod/DetailHandle.h>

/// The box around all points of a detail, and around what its placed primitives (spheres, volumes, packed geometry...)
/// reach.
///
/// Failure  empty without points; coordinates that are not numbers are passed over
/// Threads  runs in parallel; the result does not depend on the number of threads
HOST_API BAS_BoundingBox MODcomputeBounds(const MSH_Detail &detail);

/// The points that no primitive uses, in order.
HOST_API ELM_OffsetList MODunusedPoints(const MSH_Detail &detail);

/// A detail of the points alone: their attributes and groups, and the attributes of the detail, all shared.
HOST_API MOD_ConstDetailHandle MODpointsOf(const MSH_Detail &detail);

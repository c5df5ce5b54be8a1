#pragma once

#include <rq/attrib/AttributeList.h>
#include <rq/subd/detail/cage.h>

namespace rq
{
/// The corner of the cage that lies next to each corner of each refined face, for values that cannot be blended.
RQ_DataArrayHandle nearestCorners(const Cage &cage, int level);

/// The values of a floating-point array of face corners, refined linearly on each face.
RQ_DataArrayHandle linearCorners(const Cage &cage, int level, const RQ_DataArray &array);
}  // namespace rq

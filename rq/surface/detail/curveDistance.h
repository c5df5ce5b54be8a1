#pragma once

#include <vector>

#include <rq/surface/detail/SpanShapes.h>

namespace rq
{
/// For every span of every curve (`spans` becomes their numbers), the least number of even pieces whose straight lines stay
/// within `distance` of "P" of all segments; 1 for spans of no length.
///
/// Threads  runs in parallel over curves; the result does not depend on the number of threads
std::vector<int> segmentsWithin(const SpanShapes &shapes, const RQ_AttributeList &vertex, double distance,
                                RQ_CountArray &spans);
}  // namespace rq

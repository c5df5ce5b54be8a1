#pragma once

#include <rq/surface/detail/CurveSampling.h>

namespace rq
{
/// The rational weights that shape a vertex array: "Pw" where it has one number a vertex, null otherwise.  Homogeneous
/// positions and the weights themselves are not divided.
const RQ_DataArray *rationalWeights(const RQ_AttributeList &list, int attribute, int segment);

/// The vertex attributes of curves at all samples: numbers shaped by the basis, everything else of the nearest vertex.
RQ_AttributeListHandle sampledList(const CurveSampling &sampling, const RQ_AttributeList &vertex);
}  // namespace rq

#pragma once

#include <functional>

#include <rq/surface/detail/CurveSampling.h>

namespace rq
{
/// Something that makes values at places of the values of vertices.
struct Sampler
{
    int64_t vertices;  ///< arrays of fewer entries are left out
    int64_t samples;

    /// Write an array that `isEvaluated`, of these weights if any, into one of `makeLike`.
    std::function<void(const RQ_DataArray &array, const RQ_DataArray *weights, RQ_DataArray &target)> evaluate;

    /// For every sample the vertex that counts most; asked at most once.
    std::function<RQ_DataArrayHandle()> nearestVertices;
};

/// The rational weights that shape a vertex array: "Pw" where it has one number a vertex, null otherwise.  Homogeneous
/// positions and the weights themselves are not divided.
const RQ_DataArray *rationalWeights(const RQ_AttributeList &list, int attribute, int segment);

/// The vertex attributes at all samples: numbers are evaluated, everything else is that of the nearest vertex.
RQ_AttributeListHandle sampledList(const Sampler &sampler, const RQ_AttributeList &vertex);
RQ_AttributeListHandle sampledList(const CurveSampling &sampling, const RQ_AttributeList &vertex);
}  // namespace rq

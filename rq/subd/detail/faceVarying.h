#pragma once

#include <cstdint>

#include <rq/data/DataArray.h>

namespace rq
{
struct Refiner;

/// Values of a face-varying channel at the deepest level, one tuple a value.
template <class T>
RQ_DataArrayHandle interpolateFaceVarying(const Refiner &refiner, int channel, const T *values, int64_t tuple, RQ_Type type);

/// For each corner of each face of the deepest level the number of its value.
RQ_DataArrayHandle faceVaryingIndices(const Refiner &refiner, int channel);
}  // namespace rq

#pragma once

#include <rq/surface/detail/CurveSampling.h>

namespace rq
{
/// Whether the basis makes new values of an array: numbers that fit a double, no text and no arrays of arrays.
bool isEvaluated(const RQ_DataArray &array);

/// Make an array of unset values of the storage, tuple size and type of one that `isEvaluated`.
RQ_DataArrayHandle makeLike(const RQ_DataArray &array, int64_t entries);

/// Write the values of a vertex array that `isEvaluated` at all samples into an array of `makeLike`, from entry `at` on.
///
/// Shape    32-bit floats and halves are summed in 32 bits, everything else in 64; integers are rounded to the nearest and
///          kept in their range.  `weights`, if not null, has one rational weight a vertex; a sum of them that is 0 makes 0
/// Failure  false, with nothing written, for a target of another kind or without the room
/// Threads  runs in parallel over curves; the result does not depend on the number of threads
bool evaluateCurves(const CurveSampling &sampling, const RQ_DataArray &vertices, const RQ_DataArray *weights,
                    RQ_DataArray &target, int64_t at = 0);
}  // namespace rq

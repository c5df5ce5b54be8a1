#pragma once

#include <rq/data/types.h>

namespace rq
{
/// Quantise rows of a table as `RQ_DataArray::fillArray` says: the first `components` values of each of `rows` rows, which
/// begin `fromStride` and `toStride` values apart.  Nothing is written when the storage is not numeric.  Runs in parallel
/// above some 100,000 values.
void quantiseRows(const void *from, RQ_Storage fromStorage, int64_t fromStride, uint8_t *to, int64_t toStride,
                  int64_t components, int64_t rows, double black, double white);
}  // namespace rq

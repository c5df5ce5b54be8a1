#pragma once

#include <cstdint>

namespace rq
{
// Blocks of floats to 32-bit integers, by the conversion policy: cut towards 0, saturated, 0 for not-a-number.
void truncateValues(const float *from, int32_t *to, int64_t count);
void truncateValues(const double *from, int32_t *to, int64_t count);
}  // namespace rq

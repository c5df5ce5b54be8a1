#pragma once

#include <cstdint>

#include <host/plt/types.h>

namespace rq
{
// Blocks of half floats, by the processor's own conversion where it has one.  The bits are those of the scalar conversion.
void convertHalfs(const PLT_Half *from, float *to, int64_t count);
void convertHalfs(const float *from, PLT_Half *to, int64_t count);
}  // namespace rq

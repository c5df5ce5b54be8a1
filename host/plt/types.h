#pragma once

#include <cstddef>
#include <cstdint>

#include <Imath/half.h>

/// Exported from libRQHost.
#define HOST_API __attribute__((visibility("default")))

/// 16-bit float of the interchange kind: 1 sign, 5 exponent, 10 mantissa bits.
using PLT_Half = Imath::half;

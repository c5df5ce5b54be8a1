#pragma once

#include <cstdint>

#include <host/plt/types.h>

namespace host
{
/// For many quads whether the diagonal from the first corner cuts them, as `diagonalSplits` tells.
///
/// Shape  `positions` holds x, y, z of every point; quad i has the points at `firsts[i]` and the three entries behind;
///        `splits[i]` becomes 1 where its first diagonal serves, else 0
HOST_API void splitQuads(const float *positions, const int32_t *points, const int64_t *firsts, int64_t quads,
                         uint8_t *splits);
HOST_API void splitQuads(const float *positions, const int64_t *points, const int64_t *firsts, int64_t quads,
                         uint8_t *splits);

/// The same for both diagonals: `convex[i]` becomes 1 where each of them serves, so that quad i is convex.
HOST_API void convexQuads(const float *positions, const int32_t *points, const int64_t *firsts, int64_t quads,
                          uint8_t *convex);
HOST_API void convexQuads(const float *positions, const int64_t *points, const int64_t *firsts, int64_t quads,
                          uint8_t *convex);
}  // namespace host

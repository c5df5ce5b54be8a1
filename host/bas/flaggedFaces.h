#pragma once

#include <cstdint>

#include <host/bas/BitArray.h>

namespace host
{
/// A bit for each of at most 64 neighbouring triangles or quads: whether it has a flagged point.
///
/// Shape  `points` holds those of the faces, `corners` each, which is 3 or 4; bit i of `flags` is that of point `first` + i.
///        No point lies outside, and 64 bits behind the last one are unset.
HOST_API uint64_t flaggedFaces(const int32_t *points, int64_t corners, int64_t faces, const BAS_BitArray &flags,
                               int64_t first);
HOST_API uint64_t flaggedFaces(const int64_t *points, int64_t corners, int64_t faces, const BAS_BitArray &flags,
                               int64_t first);
}  // namespace host

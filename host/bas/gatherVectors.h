#pragma once

#include <cstdint>

#include <host/plt/types.h>

namespace host
{
/// A vector in the room of four numbers, which one move takes as fast as three.
template <class Real> struct PaddedVector
{
    Real x, y, z, padding;
};

/// Write vectors one after the other: for each index the one at its place behind `first`.
///
/// Shape  `to` has room for three numbers an index, and one more
HOST_API void gatherVectors(const PaddedVector<float> *vectors, const int32_t *indices, int64_t count, int64_t first,
                            float *to);
HOST_API void gatherVectors(const PaddedVector<float> *vectors, const int64_t *indices, int64_t count, int64_t first,
                            float *to);
HOST_API void gatherVectors(const PaddedVector<double> *vectors, const int32_t *indices, int64_t count, int64_t first,
                            double *to);
HOST_API void gatherVectors(const PaddedVector<double> *vectors, const int64_t *indices, int64_t count, int64_t first,
                            double *to);
}  // namespace host

#pragma once

#include <cstdint>

#include <host/bas/CornerFan.h>
#include <host/bas/gatherVectors.h>

namespace host
{
/// The normals of at most 64 points from the sums of what their faces give, and a bit for each that is not surely smooth.
///
/// Shape  a sum holds the vectors times their weights, and the weights; `least` the least weight at each point, null for 1
HOST_API uint64_t sumNormals(const BAS_Vec4d *sums, const double *least, int64_t count, const CuspCosines &cusp,
                             bool normalize, PaddedVector<float> *normals);
HOST_API uint64_t sumNormals(const BAS_Vec4d *sums, const double *least, int64_t count, const CuspCosines &cusp,
                             bool normalize, PaddedVector<double> *normals);
}  // namespace host

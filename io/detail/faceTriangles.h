#pragma once

#include <cstdint>
#include <vector>

#include <host/fwd.h>

namespace rq::io
{
/// The closed polygons of a detail, cut into triangles: three vertices for each, face after face.
///
/// Shape    faces of fewer than three corners, or with a vertex without a point, give none.  Vertices are told by their
///          offsets, of which there must be fewer than 2^31
/// Failure  throws std::bad_alloc when memory is exhausted
std::vector<int32_t> faceTriangles(const MOD_ConstDetailHandle &detail);
}  // namespace rq::io

#pragma once

#include <string>

#include <host/fwd.h>
#include <io/Message.h>

namespace rq::io
{
/// Write the faces of a detail as a binary STL file.  `name` is what messages call it.
///
/// Shape    a facet for each triangle, faces of more corners cut; its normal is "N" of the primitive where that has three
///          numbers, or else that of its plane, zero without one; its word "attribute" of the primitive (int32) where that
///          fits.  Packed geometry becomes copies of what it places (docs/files.md)
/// Failure  false with an error when memory is exhausted or there are too many triangles.  Warned of: every attribute, group
///          and type of primitives that STL cannot hold, by name; faces that give no triangle, and points that none uses
RQ_API bool writeSTL(const MOD_ConstDetailHandle &detail, const std::string &name, std::string &bytes, Messages &messages);
}  // namespace rq::io

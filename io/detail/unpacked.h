#pragma once

#include <string>

#include <host/fwd.h>
#include <io/Message.h>

namespace rq::io
{
/// The same with copies of what packed geometry places, where it places them, in its stead.  `name` is what messages call
/// the file.
///
/// Shape    what was not packed comes first, then copy after copy, each before those that lie in it: their points, polygons
///          and particles, with attributes of numbers and texts and with their groups.  Points, directions and rotations are
///          placed, normals made as long as one, and polygons of mirrored copies turned about.  A copy has the attributes
///          that it lacks, and the groups of primitives, from what places it.  Materials of all are those of the detail
/// Failure  a handle of nothing after an error: more than 64 levels, 2^24 copies, or 2^31 points, vertices or primitives.
///          Throws std::bad_alloc when memory is exhausted.  Warned of: what cannot be had, primitives of other types, other
///          attributes, and materials of one name that are not the same
/// Cost     nothing for a detail without packed geometry, which is returned itself
MOD_ConstDetailHandle unpacked(const MOD_ConstDetailHandle &detail, const std::string &name, Messages &messages);
}  // namespace rq::io

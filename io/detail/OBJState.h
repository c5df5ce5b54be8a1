#pragma once

#include <vector>

#include <host/fwd.h>
#include <io/detail/OBJBlock.h>

namespace rq::io
{
/// Write the groups and the attributes "object", "material" and "smoothing" of the primitives, which exist already.
///
/// `firstPrimitive` tells for each block how many primitives lie before it, and ends with their number in all.
void writeOBJState(MOD_Edit &edit, const std::vector<OBJBlock> &blocks, const std::vector<int64_t> &firstPrimitive);
}  // namespace rq::io

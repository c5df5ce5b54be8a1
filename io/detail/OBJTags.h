#pragma once

#include <host/mod/Edit.h>
#include <io/Message.h>
#include <io/detail/OBJBlock.h>

namespace rq::io
{
/// Write the tags of subdivision surfaces as the attributes that make such tags again: "crease" of vertices, "corner" of
/// points, "hole" of primitives, and the detail attributes of the boundary and method tags.
///
/// `points` has the point of every corner.  A tag that cannot be read is warned of; unknown ones are passed over.
void writeOBJTags(MOD_Edit &edit, const OBJSource &source, const std::vector<OBJBlock> &blocks,
                  const std::vector<int32_t> &points, int64_t pointCount, Messages &messages);
}  // namespace rq::io

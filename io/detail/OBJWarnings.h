#pragma once

#include <io/Message.h>
#include <io/detail/OBJBlock.h>

namespace rq::io
{
/// Warn, once of each sort, of what was passed over or kept although it is odd.
void warnOfOddities(const OBJSource &source, const std::vector<OBJBlock> &blocks, Messages &messages);
}  // namespace rq::io

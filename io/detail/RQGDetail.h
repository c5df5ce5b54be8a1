#pragma once

#include <io/detail/RQGInput.h>
#include <io/detail/RQGOutput.h>

namespace rq::io
{
// A detail is the members "points", "primitives", "attributes" and "groups" of a map.

/// How deep details may lie in packed primitives of others.
constexpr int kRQGDeepest = 64;

/// Write the members.  The detail must have no vacant offsets.
void writeDetail(RQGOutput &output, const MSH_Detail &detail);

/// Read the members.  False with a message when they make no detail.
bool readDetail(RQGInput &input, const RQGMap &members, MOD_DetailHandle &detail);
}  // namespace rq::io

#pragma once

#include <host/mod/Edit.h>
#include <io/detail/RQGInput.h>
#include <io/detail/RQGOutput.h>

namespace rq::io
{
// Primitives of one type that follow each other are a map: their type, whether they are closed, their numbers of corners,
// the points of all corners, and what else they hold: one "payload" for all, or "payloads" and which one each has.

void writePrimitives(RQGOutput &output, const MSH_Detail &detail);

/// The edit must have the points already.
bool readPrimitives(RQGInput &input, JSONText list, MOD_Edit &edit);
}  // namespace rq::io

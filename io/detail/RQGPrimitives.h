#pragma once

#include <host/elm/PrimitiveFactory.h>
#include <host/mod/Edit.h>
#include <io/detail/RQGInput.h>
#include <io/detail/RQGOutput.h>

namespace rq::io
{
// Primitives of one type that follow each other are a map: their type, whether they are closed, their numbers of corners,
// the points of all corners, and what else they hold: one "payload" for all, or "payloads" and which one each has.

/// The type that is never registered has no definition, and so no name there.
inline constexpr std::string_view kRQGReserved = "reserved";

/// Whether primitives of a type are closed unless the file tells.
constexpr bool isRQGClosed(ELM_PrimitiveTypeId type) { return type == ELM_PRIMITIVE_POLYGON; }

void writePrimitives(RQGOutput &output, const MSH_Detail &detail);

/// The edit must have the points already.
bool readPrimitives(RQGInput &input, JSONText list, MOD_Edit &edit);
}  // namespace rq::io

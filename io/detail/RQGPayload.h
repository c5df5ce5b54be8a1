#pragma once

#include <host/msh/Payload.h>
#include <io/detail/RQGInput.h>
#include <io/detail/RQGOutput.h>

namespace rq::io
{
// What a primitive holds beyond the columns is a map of the payload's fields.

void writePayload(RQGOutput &output, const MSH_Payload &payload);

/// Fields that the map leaves out keep what they have.  Whether they make sense is for `MSH_Payload::check` to tell.
bool readPayload(RQGInput &input, JSONText map, MSH_Payload &payload);
}  // namespace rq::io

#pragma once

#include <host/mod/Edit.h>
#include <io/detail/RQGInput.h>
#include <io/detail/RQGOutput.h>

namespace rq::io
{
// A group is a map of its name and its members: their offsets one by one, or as "runs": the first of each run and the one
// behind its last.

void writeGroup(RQGOutput &output, const ELM_Group &group);
bool readGroup(RQGInput &input, JSONText map, ELM_Owner owner, MOD_Edit &edit);
}  // namespace rq::io

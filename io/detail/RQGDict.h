#pragma once

#include <host/bas/OptionsHolder.h>
#include <io/detail/RQGInput.h>
#include <io/detail/RQGOutput.h>

namespace rq::io
{
// Dictionaries are maps whose keys name the type of the value before a blank: {"float scale": 2}.  A key without one takes
// the type that its value looks like.

void writeDict(RQGOutput &output, const BAS_OptionsHolder &dict);
bool readDict(const RQGInput &input, JSONText map, BAS_OptionsHolder &to);
}  // namespace rq::io

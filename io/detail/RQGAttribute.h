#pragma once

#include <host/mod/Edit.h>
#include <io/detail/RQGInput.h>
#include <io/detail/RQGOutput.h>

namespace rq::io
{
// An attribute is a map of what it is, and of its rows: "values", or one "value" that all rows have.  Rows of strings,
// dictionaries and arrays are numbers of entries of a "table"; without a table they are the values themselves.

void writeAttribute(RQGOutput &output, const ELM_Attribute &attribute);

/// The edit must have the owner's elements already.
bool readAttribute(RQGInput &input, JSONText map, ELM_Owner owner, MOD_Edit &edit);
}  // namespace rq::io

#pragma once

#include <vector>

#include <host/elm/PrimitiveFactory.h>

namespace host
{
/// The primitive types that are there from the start.  Their payloads belong to upper layers, and so does the list.
std::vector<ELM_PrimitiveDefinition> builtInTypes();
}  // namespace host

#pragma once

#include <host/elm/Group.h>
#include <host/elm/Range.h>

namespace rq
{
/// The primitives of a range that are in the group `only` and not in the group `without`; null groups do not count.
ELM_Range selectPrimitives(const ELM_Range &range, const ELM_Group *only, const ELM_Group *without);
}  // namespace rq

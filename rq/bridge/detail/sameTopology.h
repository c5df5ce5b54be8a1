#pragma once

#include <host/msh/Detail.h>

namespace rq
{
/// True when two snapshots have the same elements connected in the same way, whether or not one was made from the other.
bool hasSameTopology(const MSH_Detail &a, const MSH_Detail &b);
}  // namespace rq

#pragma once

#include <host/mod/DetailHandle.h>

namespace rq::viewport
{
/// What a detail that was just loaded is when it is taken for the next state of another one: where both have the same
/// topology, all that is equal is shared, so that it keeps its identity, and caches that know the one before make anew only
/// what has changed.  The detail itself where the topology is another one.
///
/// Ownership  shares columns with both
MOD_ConstDetailHandle followFrame(const MOD_ConstDetailHandle &before, const MOD_ConstDetailHandle &loaded);
}  // namespace rq::viewport

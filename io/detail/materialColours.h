#pragma once

#include <host/fwd.h>

namespace rq::io
{
/// A detail with colours "Cd" that follow from its materials, for files that cannot hold these.
///
/// Shape    of points where all that use a point are of one material, or else of primitives; in 255ths, white where there is
///          no material.  The detail itself when it has a "Cd" of its own, or when its materials tell no colours
MOD_ConstDetailHandle withMaterialColours(const MOD_ConstDetailHandle &detail);
}  // namespace rq::io

#pragma once

#include <vector>

#include <host/bas/Vector.h>
#include <host/msh/Surface.h>

namespace rq
{
/// The loops as polygons in parameters, curves cut into `pieces` a span, straight stretches left whole.
///
/// Loops that are not closed are closed straight.  Ones with places that are no numbers, and ones of fewer than three
/// points, are left out; the first of these is a warning at verbose level 1.
std::vector<std::vector<BAS_Vec2d>> trimPolygons(const MSH_TrimLoops &trims, int pieces);
}  // namespace rq

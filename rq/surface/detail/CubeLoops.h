#pragma once

#include <cstddef>
#include <cstdint>

namespace rq
{
/// How a surface cuts a cube whose corners lie inside or outside of it: loops around its edges, each of which is a face.
///
/// Corner c lies at (c & 1, c >> 1 & 1, c >> 2 & 1).  Edge 8 * axis + c goes along an axis from corner c, which lies at the
/// near end of it.
struct CubeLoops
{
    uint8_t loops = 0;
    uint8_t corners = 0;     ///< of all loops
    uint8_t counts[4] = {};  ///< the corners of each loop
    uint8_t edges[12] = {};  ///< that they lie on, loop after loop, counter-clockwise seen from outside
};

/// The loops for each choice of corners inside: bit c is that of corner c.
///
/// These are the 256 cases of Lorensen and Cline, "Marching Cubes: A High Resolution 3D Surface Construction Algorithm"
/// (SIGGRAPH 1987), found by going around the sides of the cube.  A side whose inner corners are opposite ones has them cut
/// off one by one, whichever of its two cubes looks at it, so that loops of neighbours always meet and each pair of
/// consecutive corners belongs to two loops, once in each direction.
const CubeLoops *cubeLoops();
}  // namespace rq

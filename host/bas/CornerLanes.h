#pragma once

#include <algorithm>
#include <cstdint>
#include <type_traits>

#include <host/bas/Vector.h>
#include <host/bas/normalLanes.h>

namespace host
{
/// Points that lie in memory as x, y, z in 32-bit floats.
struct HOST_API PackedPositions
{
    const float *values = nullptr;

    BAS_Vec3d operator()(int64_t point) const
    {
        return BAS_Vec3d(values[3 * point], values[3 * point + 1], values[3 * point + 2]);
    }

    /// Read the first `lanes.known` corners of `lanes.faces` faces, of which each has `lanes.corners`; their points stand
    /// one after the other.
    void read(const int32_t *points, CornerLanes<float> &lanes) const;
    void read(const int64_t *points, CornerLanes<float> &lanes) const;
};

/// In what lanes hold the positions that a reader gives.
template <class Position> using LaneOf = std::conditional_t<std::is_same_v<Position, PackedPositions>, float, double>;

/// Read the corners, `atMost` of each, 3 or 4, of faces [first, last), at most as many as lanes.  False, and nothing is
/// read, unless these are all triangles or all quads.
template <class Topology, class Position>
bool readCorners(const Topology &topology, const Position &position, int64_t first, int64_t last,
                 CornerLanes<LaneOf<Position>> &lanes, int64_t atMost = CornerLanes<LaneOf<Position>>::kMost)
{
    lanes.faces = last - first;
    lanes.corners = topology.cornersOfEach(first, last);
    if (lanes.corners < 3 || lanes.corners > CornerLanes<double>::kMost)
        return false;
    lanes.known = std::min(lanes.corners, atMost);
    const int64_t begin = topology.begin(first);
    if constexpr (std::is_same_v<Position, PackedPositions>)
        position.read(topology.points + begin, lanes);
    else
        for (int64_t corner = 0; corner < lanes.known; ++corner)
            for (int64_t i = 0; i < (lanes.faces + 3) / 4 * 4; ++i)
            {
                const int64_t face = std::min(i, lanes.faces - 1);
                const BAS_Vec3d at = position(topology.point(begin + face * lanes.corners + corner));
                for (int axis = 0; axis < 3; ++axis)
                    lanes.at[corner][axis][i] = at[axis];
            }
    return true;
}
}  // namespace host

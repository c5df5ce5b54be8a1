#pragma once

#include <cstdint>
#include <type_traits>

#include <host/bas/Vector.h>
#include <host/bas/normalLanes.h>

namespace host
{
/// Points that lie in memory as x, y, z in 32-bit floats.
struct PackedPositions
{
    const float *values = nullptr;
    int64_t count = 0;

    BAS_Vec3d operator()(int64_t point) const
    {
        return BAS_Vec3d(values[3 * point], values[3 * point + 1], values[3 * point + 2]);
    }
};

/// Neighbouring faces of equal size, whose points stand one after the other from `points`, four at a time in wide registers.
/// `Index` is int32_t or int64_t.
///
/// Every result has the bits that the functions of faceGeometry.h give for one face.  All functions return false, and have
/// done nothing, unless the processor has such registers and these are triangles or quads, at least four: otherwise the
/// caller goes face by face.
template <class Index> struct HOST_API PackedFaces
{
    PackedPositions positions = {};
    const Index *points = nullptr;
    int64_t corners = 0;  // of each face
    int64_t faces = 0;

    /// The directions and lengths of the Newell vectors of at most `VectorLanes::kCount` faces.
    bool normals(VectorLanes &normals, double *lengths) const;

    /// The same of the vectors along their fast normals.
    bool fastNormals(VectorLanes &normals, double *lengths) const;

    /// The turns at all corners; `turns` has room for them.
    bool turns(TurnLanes &turns) const;

private:
    template <class Visit> bool visit(Visit &&visit) const;
};

extern template struct PackedFaces<int32_t>;
extern template struct PackedFaces<int64_t>;

/// Faces [first, last) of a topology in this form; none where they do not have it.
template <class Topology, class Position>
PackedFaces<typename Topology::Index> packedFaces(const Topology &topology, const Position &position, int64_t first,
                                                  int64_t last)
{
    PackedFaces<typename Topology::Index> packed;
    if constexpr (std::is_same_v<Position, PackedPositions>)
    {
        packed.positions = position;
        packed.points = topology.points + topology.begin(first);
        packed.corners = topology.cornersOfEach(first, last);
        packed.faces = packed.corners > 0 ? last - first : 0;
    }
    return packed;
}
}  // namespace host

#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include <host/bas/LargeBlocks.h>
#include <host/bas/Vector.h>

namespace rq
{
/// A triangle at one of its corners.  Those at one vertex, in order of faces, are its fan.
struct FanTriangle
{
    int64_t face;
    int64_t begin;           ///< the face's first corner
    int64_t next, previous;  ///< the vertices that follow and precede this one

    // Places in the fan, -1 for none: the neighbours across the edges to `next` and from `previous`, and the first triangle
    // with a direction of the group that this one is in.
    int across[2];
    int group;

    BAS_Vec3f weighted;  ///< the direction in which u grows, as long as the angle
    uint32_t marks;      ///< of its corner (TangentMark)

    uint8_t half;                    ///< which of the face's triangles this is
    uint8_t at;                      ///< which of its corners lies at the vertex
    std::array<uint8_t, 3> corners;  ///< where they lie in the face
    bool isPreserving;               ///< its texture is not mirrored
    bool isFree;                     ///< its texture has no direction

    /// One of its corners, of the mesh.
    int64_t corner(int place) const { return begin + corners[size_t(place)]; }
    int64_t corner() const { return corner(at); }

    /// The triangles of a mesh in the order in which groups begin: by face, half, and corner of the triangle.
    int64_t rank() const { return (2 * face + half) * 3 + at; }
};

/// Room for triangles is not cleared before they are written.
using FanTriangles = std::vector<FanTriangle, BAS_BlockAllocator<FanTriangle>>;

/// Find the triangles of a fan that share an edge and walk it in opposite directions; of several the first ones are paired.
void linkFan(std::span<FanTriangle> fan);

/// Put neighbours of the same mirroring into a group, from each triangle that has a direction.  Free triangles pass a group
/// on or, without `throughFree`, end it.
void groupFan(std::span<FanTriangle> fan, bool throughFree);
}  // namespace rq

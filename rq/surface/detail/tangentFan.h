#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace rq
{
/// A triangle at one of its corners.  Those at one vertex, in order of faces, are its fan.
struct FanTriangle
{
    std::array<int64_t, 3> corners;  ///< of the mesh
    int64_t face;
    int64_t next, previous;  ///< the vertices that follow and precede this one
    int at;                  ///< which of `corners` lies at the vertex
    int half;                ///< which of the face's triangles this is
    bool isPreserving;       ///< its texture is not mirrored
    bool isFree;             ///< its texture has no direction

    // Places in the fan, -1 for none: the neighbours across the edges to `next` and from `previous`, and the first triangle
    // with a direction of the group that this one is in.
    int across[2] = {-1, -1};
    int group = -1;

    int64_t corner() const { return corners[size_t(at)]; }

    /// The triangles of a mesh in the order in which groups begin: by face, half, and corner of the triangle.
    int64_t rank() const { return (2 * face + half) * 3 + at; }
};

/// Find the triangles of a fan that share an edge and walk it in opposite directions; of several the first ones are paired.
void linkFan(std::span<FanTriangle> fan);

/// Put neighbours of the same mirroring into a group, from each triangle that has a direction.  Free triangles pass a group
/// on or, without `throughFree`, end it.
void groupFan(std::span<FanTriangle> fan, bool throughFree);
}  // namespace rq

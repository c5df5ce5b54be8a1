#pragma once

/// The programs of the graphics card.
///
/// Vertices have no attributes: a vertex is a number, and what it needs it looks up in buffers that hold the library's
/// arrays as they are.  With INDEXED the number is a point (so that corners that share a point are worked out once), else a
/// corner, which knows its point, its place in the face that was cut, and its triangle.
namespace rq::viewport::shader
{
extern const char *const kCommon;         ///< buffers, lookups and colours
extern const char *const kMeshVertex;     ///< triangles
extern const char *const kSegmentVertex;  ///< pieces of curves as ribbons that face the eye
extern const char *const kPointVertex;    ///< sprites
extern const char *const kNormalVertex;   ///< a line for each normal
extern const char *const kFragment;       ///< light, wires and tints
extern const char *const kPlainFragment;  ///< one colour
}  // namespace rq::viewport::shader

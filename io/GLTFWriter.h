#pragma once

#include <string>

#include <host/fwd.h>
#include <io/Message.h>
#include <io/NumberForm.h>

namespace rq::io
{
/// Write polygons and particles of a detail as a glTF 2.0 file: binary (GLB), or JSON with its data within.  `name` is what
/// messages call it.
///
/// Shape    a mesh and a node for each "object" of the primitives, with a glTF primitive for each "material": closed
///          polygons cut into triangles, open ones as lines or line strips, particles as points; all points when there is no
///          primitive.  All share their vertices: the points, or where vertices have attributes the distinct corners.
///          Attributes of points and vertices: "P", "N", "tangent" (4), "uv", "uv2" and so on, "Cd" with "Alpha", others of
///          1 to 4, 9 or 16 numbers by their names behind "_"; whole numbers in 8 or 16 bits where they fit, or else floats.
///          Materials are what the dictionary "materials" of the detail tells, but of the colour of their primitives where
///          these have one each; other colours of primitives are those of corners.  Each detail that packed geometry places
///          is written once, and each of its places is a node with a matrix (docs/files.md)
/// Failure  false with an error when memory is exhausted, the file would have 4 GiB, or more than 2^20 copies are packed.
///          Warned of: every attribute, group and type of primitives that glTF cannot hold, by name; values that it does not
///          allow and what becomes of them; faces that are cut, and points that nothing uses
RQ_API bool writeGLTF(const MOD_ConstDetailHandle &detail, NumberForm form, const std::string &name, std::string &bytes,
                      Messages &messages);
}  // namespace rq::io

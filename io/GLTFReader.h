#pragma once

#include <string>
#include <string_view>

#include <host/fwd.h>
#include <io/Message.h>

namespace rq::io
{
/// True when a file is binary glTF (GLB), or a JSON text that tells itself to be glTF.
RQ_API bool isGLTF(std::string_view text);

/// Read the scene of a glTF 2.0 file, JSON or binary, into a detail.  `name` is what messages call it; buffers in files of
/// their own are looked for beside it.
///
/// Shape    every node of the scene that has a mesh gives a copy of it, placed by the matrices of the node and those above.
///          Primitives that use the same attributes in the same place share points.  Triangles, strips and fans give closed
///          polygons, lines and their strips and loops open ones, points particle primitives.  Attributes are those of
///          points: "P", "N", "tangent" (4), "uv", "uv2" and so on (2, with v upward), "Cd" (3) with "Alpha", and what
///          begins with "_" by the rest of its name: real32, or int32 for whole numbers that are no fractions.  Where some
///          points lack what others have, colours are white and all else 0.  Primitives have the name of their node, or
///          mesh, in "object", and that of their material in "material"; the dictionary "materials" of the detail has its
///          base colour, roughness and metalness (docs/files.md)
/// Failure  false with an error when the file is malformed, a number refers to nothing or data lie outside their buffers
///          or are compressed;
///          the detail is untouched then.  Warned of, once each: morph targets, skins and unknown attributes, which are
///          passed over, and required extensions
RQ_API bool readGLTF(std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages);
}  // namespace rq::io

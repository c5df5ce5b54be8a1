#pragma once

#include <string>

#include <host/fwd.h>
#include <io/Message.h>

namespace rq::io
{
/// Write the polygons and particles of a detail as the text of an OBJ file.  `name` is what messages call it.
///
/// Shape    what `readOBJ` reads: "P" and "Cd" of points as "v", "uv" and "N" of vertices, or else of points, as "vt" and
///          "vn" (equal ones once), closed and open polygons and particles as "f", "l" and "p", groups of primitives as "g",
///          and of the primitives' attributes "object" as "o", "material" as "usemtl", "smoothing" as "s".  Numbers are as
///          long as it takes to read the same ones back.  Vacant offsets are left out; packed geometry becomes copies of
///          what it places (docs/files.md).  `materials`, if given, receives the text of `materialFileOf(name)`, which is
///          named by "mtllib" then: colours as "Kd", roughness and metalness as "Pr" and "Pm"; it stays empty where the
///          dictionary "materials" of the detail tells none
/// Failure  false with an error when memory is exhausted, or there is too much packed geometry.  Warned of: every
///          attribute, group and type of primitives that OBJ cannot hold, by name; vertices without a point
RQ_API bool writeOBJ(const MOD_ConstDetailHandle &detail, const std::string &name, std::string &bytes, Messages &messages,
                     std::string *materials = nullptr);

/// The file that an OBJ file names for its materials: beside it, and with ".mtl" at the end.
RQ_API std::string materialFileOf(const std::string &name);
}  // namespace rq::io

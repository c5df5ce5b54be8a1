#pragma once

#include <string>

#include <host/fwd.h>
#include <io/Message.h>
#include <io/NumberForm.h>

namespace rq::io
{
/// Write points and closed polygons of a detail as a PLY file.  `name` is what messages call it.
///
/// Shape    what `readPLY` reads back: an element "vertex" for each point and a "face" for each closed polygon of any number
///          of corners.  "P", "N", "uv" (2), "Cd" (3) with "Alpha" become the properties that everybody knows, colours in
///          bytes where those tell them; other numeric attributes of points and primitives properties of their names, those
///          of several components NAME_0, NAME_1 and so on; arrays of numbers lists; attributes of vertices lists of faces.
///          Comments tell `readPLY` which of them belong together.  Numbers of 16-bit floats take 32, of 64-bit whole ones
///          32 bits where they fit, or else become 64-bit floats.  Binary files are little-endian.  Packed geometry becomes
///          copies of what it places (docs/files.md).  Without any "Cd" the colours of materials are written, of points
///          where each has one, or else of faces
/// Failure  false with an error when memory is exhausted, or there is too much packed geometry.  Warned of: every
///          attribute, group and type of primitives that PLY cannot hold, by name; vertices without a point
RQ_API bool writePLY(const MOD_ConstDetailHandle &detail, NumberForm form, const std::string &name, std::string &bytes,
                     Messages &messages);
}  // namespace rq::io

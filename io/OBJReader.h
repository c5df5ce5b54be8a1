#pragma once

#include <string>
#include <string_view>

#include <host/fwd.h>
#include <io/Message.h>

namespace rq::io
{
/// True when the first line of a text begins with a word that every other format leaves to OBJ, such as "v" or "mtllib".
RQ_API bool isOBJ(std::string_view text);

/// Read the text of an OBJ file into a detail.  `name` is what messages call it; material files are looked for beside it.
///
/// Shape    "v" gives points with "P" (real32, 3), and "Cd" (real32, 3) where a colour follows the coordinates; a point
///          without one is white, and a point's weight is passed over.  "f", "l" and "p" give closed polygons, open polygons
///          and particle primitives, in the file's order.  Corners get "uv" (real32, 2, or 3 where some "vt" has three
///          numbers) and "N" (real32, 3): zeros where a corner has none, no attribute where no corner has one. "g" gives
///          primitive groups, one for each name of the line but "default"; "o", "usemtl" and "s" the primitive attributes
///          "object", "material" (strings) and "smoothing" (int32).  Subdivision tags ("t") give what makes them again:
///          "crease" of vertices, "corner" of points, "hole" of primitives, and detail attributes of the boundary and method
///          tags.  "mtllib" gives the dictionary "materials" of the detail, of the files beside this one (docs/files.md)
/// Units    numbers count from 1, also forward; relative ones from -1, the last element before the line
/// Failure  false with an error at the first malformed record, or the first number that refers to nothing; the detail is
///          untouched then.  Warned of, once each: faces of fewer than three corners, which are kept; uv or normals that
///          corners refer to in a file without any; unknown words, surplus numbers and missing material files; of those
///          files, lines that cannot be read, unknown words and pictures
RQ_API bool readOBJ(std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages);
}  // namespace rq::io

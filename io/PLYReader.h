#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <host/fwd.h>
#include <io/Message.h>

namespace rq::io
{
/// True when a file begins as PLY files do.
RQ_API bool isPLY(std::string_view text);

/// Read the bytes of a PLY file, text or binary in either order of bytes, into a detail.  `name` is what messages call it.
///
/// Shape    "vertex" gives points, "face" closed polygons by its list "vertex_indices" or "vertex_index", "tristrips"
///          triangles: strips turn every second one round, and -1 begins a new strip.
///          "x y z" give "P" and "nx ny nz" "N" (3), "s t" or "u v" give "uv" (2): in real64 when the file has doubles or
///          whole numbers of 32 bits, else in real32.  "red green blue" give "Cd" (real32, 3) and "alpha" with them "Alpha",
///          where whole numbers count in fractions of their type's largest.  Any other property gives an attribute of its
///          name in the smallest storage that holds its type, a list an attribute of arrays, on points for "vertex" and on
///          primitives for "face"
/// Units    numbers of points count from 0
/// Failure  false with an error at the first malformed line of the header, when the file does not hold the elements that
///          its header announces (which is found out before room is made for them), or at the first number that refers to no
///          point; the detail is untouched then.  Warned of, once each: faces of fewer than three corners, which are kept;
///          other elements, unknown lines of the header, and what follows the last element
/// Ownership  when `owner` keeps the text, and points have nothing but coordinates which lie there as the host keeps them
///          (binary, in this machine's order of bytes, at an address that is a multiple of their size), they stay there: the
///          detail holds `owner` then, and the text must not change.  Everything else is copied; corners always are, because
///          their numbers lie between them
/// Threads  read in parallel; the result does not depend on the number of threads
RQ_API bool readPLY(std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages,
                    const std::shared_ptr<const void> &owner = {});
}  // namespace rq::io

#pragma once

#include <string>
#include <string_view>

#include <host/fwd.h>
#include <io/Message.h>

namespace rq::io
{
/// True when a file begins with "OFF", or with it behind the letters that tell what its points have: "ST", "C", "N", "4".
RQ_API bool isOFF(std::string_view text);

/// Read the text of an OFF file into a detail.  `name` is what messages call it.
///
/// Shape    points give "P" (real32, 3; with a "4" the fourth coordinate divides), with an "N" normals "N" (real32, 3), with
///          a "C" colours "Cd" (real32, 3) and "Alpha" where some point has one, with "ST" "uv" (real32, 2).
///          Faces give closed polygons; three or four numbers behind the corners give "Cd" and "Alpha" of the primitive.
///          Colours are white and opaque where there is none.  When a colour of the file is above 1 all count in 255ths
/// Units    numbers of points count from 0
/// Failure  false with an error at the first malformed line, when the file does not hold the lines that it announces (which
///          is found out before room is made for them), or at the first number that refers to no point; the detail is
///          untouched then.  Warned of, once each: faces of fewer than three corners, which are kept; colours by number of a
///          map, surplus numbers and lines
/// Threads  lines are read in parallel; the result does not depend on the number of threads
RQ_API bool readOFF(std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages);
}  // namespace rq::io

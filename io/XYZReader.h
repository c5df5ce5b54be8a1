#pragma once

#include <string>
#include <string_view>

#include <host/fwd.h>
#include <io/Message.h>

namespace rq::io
{
/// True when the first line of a text that says something is one number, or three and more, and nothing else.
RQ_API bool isXYZ(std::string_view text);

/// Read points as scanners write them (XYZ, PTS): a line for each, with or without a line of their number before.  `name` is
/// what messages call the file.
///
/// Shape    three numbers give "P" (real64, 3).  What follows on the first line tells what follows on all: one number gives
///          "intensity" (real32), three "Cd" (real32, 3), four both in this order; six "N" and three more with them "Cd".
///          When a colour of the file is above 1 all count in 255ths
/// Failure  false with an error at the first line that is no point, when the file does not hold as many as it announces;
///          the detail is untouched then.  Warned of, once: surplus numbers and lines
/// Threads  lines are read in parallel; the result does not depend on the number of threads
RQ_API bool readXYZ(std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages);
}  // namespace rq::io

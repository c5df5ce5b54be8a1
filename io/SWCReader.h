#pragma once

#include <string>
#include <string_view>

#include <host/fwd.h>
#include <io/Message.h>

namespace rq::io
{
/// True when the first line that is no comment is a root: whole numbers for number and kind, and -1 behind four more.
RQ_API bool isSWC(std::string_view text);

/// Read a tree of samples as nerve cells are traced (SWC): on each line the sample's number, kind, three coordinates,
/// radius, and the number of the sample that it continues, -1 for a root.  `name` is what messages call the file.
///
/// Shape    samples are points in the file's order: "P" (real32, 3), "width" (real32, twice the radius), "kind" (int32).
///          Chains of them are open polygons from a root, or a sample that several continue, to the next of these or an end
/// Failure  false with an error at the first line that is no sample, a number that two have, a sample that continues none
///          of the file, or samples that continue each other in a ring; the detail is untouched then.  Warned of, once:
///          surplus numbers
/// Threads  lines are read in parallel; the result does not depend on the number of threads
RQ_API bool readSWC(std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages);
}  // namespace rq::io

#pragma once

#include <string>
#include <string_view>

#include <rq/api.h>

namespace rq::io
{
/// Put bytes into a file.
///
/// A file takes the place of one of its name when it is complete: whoever has the old one mapped keeps it.  What is no
/// regular file, as a pipe, is written to as it is.  Permissions stay what they were.
///
/// Threads  safe from any thread; of several that write one file the last one counts
/// Failure  false with the reason in `error`; a file that was there before is then as it was
RQ_API bool writeFile(const std::string &path, std::string_view bytes, std::string &error);

/// Write bytes to standard output.  False with the reason in `error`.
RQ_API bool writeStandardOutput(std::string_view bytes, std::string &error);
}  // namespace rq::io

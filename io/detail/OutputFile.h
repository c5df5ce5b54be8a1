#pragma once

#include <string_view>

#include <io/Message.h>

namespace rq::io
{
/// Put bytes into a file.  False with a message when that fails.
///
/// A file takes the place of one of its name when it is complete: whoever has the old one mapped keeps it.  What is no
/// regular file, as a pipe, is written to as it is.
bool writeFile(const std::string &path, std::string_view bytes, Messages &messages);

/// Write bytes to standard output.  False with a message when that fails.
bool writeStandardOutput(std::string_view bytes, Messages &messages);
}  // namespace rq::io

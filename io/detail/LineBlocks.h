#pragma once

#include <functional>
#include <string_view>
#include <vector>

namespace rq::io
{
/// Cut a text into blocks of whole lines to be read in parallel.  A line and the lines that continue it stay together.
std::vector<std::string_view> cutAtLines(std::string_view text);

/// Run `body(block)` for every block, in parallel, and report how far reading is.  False when the user interrupted.
bool forEachBlock(int64_t blocks, const std::function<void(int64_t)> &body);
}  // namespace rq::io

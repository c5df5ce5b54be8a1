#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <host/fwd.h>
#include <io/Message.h>

namespace rq::io
{
/// True when a file begins as one of the two forms of RQG files do: with the mark of the binary form, or with a map whose
/// first key is "rqg".
RQ_API bool isRQG(std::string_view text);

/// Read the bytes of an RQG file of either form into a detail.  `name` is what messages call it.  What files hold is told in
/// docs/files.md.
///
/// Failure  false with an error at the first thing that is wrong, and the detail untouched: a text that is no JSON, a binary
///          file that is cut off or whose checksums do not fit, an unknown version or type of primitives, lists of the wrong
///          length, what primitives of a type cannot be.  Warned of, once: unknown keys.  Lengths are compared with what the
///          file holds before room is made for them
/// Ownership  when `owner` keeps a text of the binary form, columns of public numeric attributes and the points of vertices
///          stay there: the detail holds `owner` then, and the text must not change
/// Threads  checksums are computed in parallel
RQ_API bool readRQG(std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages,
                    const std::shared_ptr<const void> &owner = {});
}  // namespace rq::io

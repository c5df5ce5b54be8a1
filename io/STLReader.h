#pragma once

#include <string>
#include <string_view>

#include <host/fwd.h>
#include <io/Message.h>

namespace rq::io
{
/// True when a file begins with "solid", or is as long as a binary STL file of its number of facets.
RQ_API bool isSTL(std::string_view text);

/// Read the bytes of an STL file, text or binary, into a detail.  `name` is what messages call it.
///
/// Shape    a facet gives a closed polygon of three vertices; corners at the same place share a point of "P" (real32, 3), in
///          the order of first corners: 0 and -0 are the same place, a corner with NaN has its own point.  The facets'
///          normals are the primitive attribute "N" (real32, 3).  Where some of the 16-bit words behind binary facets are
///          not 0, all of them are the primitive attribute "attribute" (int32).  The facets of all solids of a text follow
///          each other
/// Failure  false with an error at the first malformed record, or when the file does not hold the facets that it announces;
///          the detail is untouched then.  Warned of: a file without facets, bytes behind the last one
/// Threads  read and welded in parallel; the result does not depend on the number of threads
RQ_API bool readSTL(std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages);
}  // namespace rq::io

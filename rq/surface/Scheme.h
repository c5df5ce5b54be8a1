#pragma once

#include <cstdint>

#include <rq/api.h>

/// The rule by which a mesh is subdivided.
enum RQ_Scheme : int32_t
{
    RQ_SCHEME_INVALID = -1,
    RQ_SCHEME_CATMULL_CLARK = 0,
    RQ_SCHEME_LOOP,
    RQ_SCHEME_BILINEAR
};

/// A scheme by any of its names, exact and case-sensitive; -1 for null and for unknown names.
RQ_API RQ_Scheme RQscheme(const char *name);

/// The canonical name, null out of range.
RQ_API const char *RQscheme(RQ_Scheme scheme);

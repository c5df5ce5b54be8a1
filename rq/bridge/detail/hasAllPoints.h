#pragma once

#include <host/msh/Primitive.h>

namespace rq
{
/// Whether every vertex of a host primitive has a point: what has not cannot be placed.
inline bool hasAllPoints(const MSH_Primitive &primitive)
{
    if (primitive.detail().topologyIsValid())
        return true;
    const int64_t count = primitive.vertexCount();
    for (int64_t i = 0; i < count; ++i)
        if (primitive.point(i) < 0)
            return false;
    return true;
}
}  // namespace rq

#pragma once

#include <algorithm>

#include <host/msh/Detail.h>

namespace rq
{
/// The triangles of a fan: each edge that follows the first vertex, with that vertex.
class FanFaces
{
public:
    FanFaces(const MSH_Detail &detail, ELM_Offset primitive) : run_(detail.vertexRun(primitive)) {}

    int64_t count() const { return std::max<int64_t>(run_.count - 2, 0); }

    /// Call `visit(corners, vertexOf)` for the faces [begin, end).
    template <class Visit> void forEach(int64_t begin, int64_t end, Visit &&visit) const
    {
        for (int64_t face = begin; face < end; ++face)
            visit(int64_t(3), [this, face](int64_t i) { return run_.start + (i == 0 ? 0 : face + i); });
    }

private:
    MSH_Detail::VertexRun run_;
};
}  // namespace rq

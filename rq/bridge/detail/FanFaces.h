#pragma once

#include <host/msh/Detail.h>

namespace rq
{
/// The triangles of a fan: each edge that follows the first vertex, with that vertex.
class FanFaces
{
public:
    FanFaces(const MSH_Detail &detail, ELM_Offset primitive) : run_(detail.vertexRun(primitive)) {}

    /// Call `visit(corners, vertexOf)` for every face.
    template <class Visit> void forEach(Visit &&visit) const
    {
        for (int64_t face = 0; face < run_.count - 2; ++face)
            visit(int64_t(3), [this, face](int64_t i) { return run_.start + (i == 0 ? 0 : face + i); });
    }

private:
    MSH_Detail::VertexRun run_;
};
}  // namespace rq

#pragma once

#include <span>
#include <vector>

#include <host/msh/Detail.h>

namespace rq::io
{
/// The vertices of a glTF file, which have everything that points and corners have: the points of a detail, in their order,
/// or its distinct corners where these have attributes of their own.
class GLTFVertices
{
public:
    /// `ofCorners` are attributes of vertices and primitives, `used` the vertices of the host that are joined to something.
    GLTFVertices(const MSH_Detail &detail, const std::vector<const ELM_Attribute *> &ofCorners,
                 std::span<const int32_t> used);

    int64_t count() const { return points_.empty() ? detail_.pointCount() : std::ssize(points_); }

    /// The vertex of glTF that a vertex of the host, one of the used, becomes.
    uint32_t number(ELM_Offset vertex) const
    {
        return uint32_t(points_.empty() ? detail_.vertexPoint(vertex) : numbers_[size_t(vertex)]);
    }

    /// The row of an owner's attributes that a vertex of glTF has.
    int64_t row(ELM_Owner owner, int64_t number) const;

private:
    const MSH_Detail &detail_;
    std::vector<int32_t> numbers_;   // of each vertex of the host, -1 for one that is not used
    std::vector<int32_t> points_;    // of each vertex of glTF; empty when they are the points
    std::vector<int32_t> vertices_;  // the first of those that became it
};
}  // namespace rq::io

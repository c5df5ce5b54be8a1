#pragma once

#include <algorithm>

#include <host/msh/Detail.h>

namespace rq
{
/// The triangles of a strip: every three vertices that follow each other, every other one turned so that all look to one
/// side.  Those that use a point twice sew strips together and are no faces.
class StripFaces
{
public:
    StripFaces(const MSH_Detail &detail, ELM_Offset primitive)
        : points_(detail.vertexPoint()), run_(detail.vertexRun(primitive))
    {}

    /// The faces, with those that are none.
    int64_t count() const { return std::max<int64_t>(run_.count - 2, 0); }

    /// Call `visit(corners, vertexOf)` for those of [begin, end) that are faces.
    template <class Visit> void forEach(int64_t begin, int64_t end, Visit &&visit) const
    {
        points_.visit([&](const auto &column) {
            const auto points = column.reader();
            for (ELM_Offset first = run_.start + begin; first < run_.start + end; ++first)
            {
                const auto a = points.value(first), b = points.value(first + 1), c = points.value(first + 2);
                if (a == b || b == c || a == c)
                    continue;
                const bool isTurned = (first - run_.start) % 2 != 0;
                visit(int64_t(3), [=](int64_t i) { return first + (isTurned && i < 2 ? 1 - i : i); });
            }
        });
    }

private:
    const ELM_IndexColumn &points_;
    MSH_Detail::VertexRun run_;
};
}  // namespace rq

#pragma once

#include <utility>

#include <host/msh/Detail.h>
#include <host/msh/Faces.h>

namespace rq
{
/// The faces of a polygon soup, whose corners name its vertices in any order.
class SoupFaces
{
public:
    SoupFaces(const MSH_Detail &detail, ELM_Offset primitive)
        : soup_(MSHpayloadData<MSH_SoupData>(*detail.payload(primitive))), first_(detail.vertexRun(primitive).start)
    {}

    int64_t count() const { return soup_.faces(); }

    /// Call `visit(corners, vertexOf)` for the faces [begin, end).
    template <class Visit> void forEach(int64_t begin, int64_t end, Visit &&visit) const
    {
        std::visit(
            [&](const auto &corners) {
                int64_t last = soup_.start(begin);
                for (int64_t face = begin; face < end; ++face)
                {
                    const int64_t start = std::exchange(last, soup_.start(face + 1));
                    visit(last - start, [first = first_, vertices = corners.data() + start](int64_t i) {
                        return first + int64_t(vertices[i]);
                    });
                }
            },
            soup_.corners.rows());
    }

private:
    const MSH_SoupData &soup_;
    ELM_Offset first_;
};
}  // namespace rq

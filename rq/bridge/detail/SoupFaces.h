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

    /// Call `visit(corners, vertexOf)` for every face.
    template <class Visit> void forEach(Visit &&visit) const
    {
        std::visit(
            [&](const auto &corners) {
                int64_t end = 0;
                for (int64_t face = 0; face < soup_.faces(); ++face)
                {
                    const int64_t begin = std::exchange(end, soup_.start(face + 1));
                    visit(end - begin, [first = first_, vertices = corners.data() + begin](int64_t i) {
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

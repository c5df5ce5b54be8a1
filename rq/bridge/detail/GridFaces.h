#pragma once

#include <host/msh/Detail.h>
#include <host/msh/Grid.h>

namespace rq
{
/// The cells of a grid as quads, row after row; where it wraps, the last column or row connects to the first.
class GridFaces
{
public:
    GridFaces(const MSH_Detail &detail, ELM_Offset primitive)
        : grid_(detail, primitive), first_(detail.vertexRun(primitive).start)
    {}

    /// Call `visit(corners, vertexOf)` for every face.
    template <class Visit> void forEach(Visit &&visit) const
    {
        const int64_t columns = grid_.columns();
        for (int64_t row = 0; row < grid_.cellsV(); ++row)
        {
            const ELM_Offset here = first_ + row * columns, above = first_ + (row + 1) % grid_.rows() * columns;
            for (int64_t column = 0; column < grid_.cellsU(); ++column)
            {
                const int64_t next = column + 1 < columns ? column + 1 : 0;
                visit(int64_t(4), [=](int64_t i) { return (i < 2 ? here : above) + (i == 0 || i == 3 ? column : next); });
            }
        }
    }

private:
    MSH_Grid grid_;
    ELM_Offset first_;
};
}  // namespace rq

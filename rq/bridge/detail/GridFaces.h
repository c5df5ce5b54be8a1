#pragma once

#include <algorithm>

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

    int64_t count() const { return grid_.cellsU() * grid_.cellsV(); }

    /// Call `visit(corners, vertexOf)` for the faces [begin, end).
    template <class Visit> void forEach(int64_t begin, int64_t end, Visit &&visit) const
    {
        const int64_t columns = grid_.columns(), cells = grid_.cellsU();
        for (int64_t face = begin; face < end;)
        {
            const int64_t row = face / cells, rowStart = row * cells, rowEnd = std::min(end, rowStart + cells);
            const ELM_Offset here = first_ + row * columns, above = first_ + (row + 1) % grid_.rows() * columns;
            for (int64_t column = face - rowStart; column < rowEnd - rowStart; ++column)
            {
                const int64_t next = column + 1 < columns ? column + 1 : 0;
                visit(int64_t(4), [=](int64_t i) { return (i < 2 ? here : above) + (i == 0 || i == 3 ? column : next); });
            }
            face = rowEnd;
        }
    }

private:
    MSH_Grid grid_;
    ELM_Offset first_;
};
}  // namespace rq

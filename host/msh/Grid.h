#pragma once

#include <host/msh/Primitive.h>

/// What a grid's payload holds.
struct HOST_API MSH_GridData
{
    int32_t rows = 0;
    int32_t columns = 0;
    bool wrapsU = false;  ///< the last column connects to the first
    bool wrapsV = false;  ///< the last row connects to the first

    template <class Self, class Visit> static void describe(Self &self, Visit &&visit)
    {
        visit("rows", self.rows);
        visit("columns", self.columns);
        visit("wraps_u", self.wrapsU);
        visit("wraps_v", self.wrapsV);
    }
    bool check(const MSH_PayloadUse &use, std::string &why) const;
};

/// A primitive seen as a grid of vertices, stored row by row: u runs along a row, v from row to row.
class MSH_Grid : public MSH_Primitive
{
public:
    explicit MSH_Grid(const MSH_Primitive &primitive) : MSH_Primitive(primitive) {}
    MSH_Grid(const MSH_Detail &detail, ELM_Offset offset) : MSH_Primitive(detail, offset) {}

    /// False when the primitive is of another type; nothing else may be asked then.
    bool isValid() const { return type() == ELM_PRIMITIVE_GRID; }

    int64_t rows() const { return data().rows; }
    int64_t columns() const { return data().columns; }
    bool wrapsU() const { return data().wrapsU; }
    bool wrapsV() const { return data().wrapsV; }

    /// Cells in each direction, the wrapping ones included.
    int64_t cellsU() const { return columns() - (wrapsU() ? 0 : 1); }
    int64_t cellsV() const { return rows() - (wrapsV() ? 0 : 1); }

    ELM_Offset vertexAt(int64_t row, int64_t column) const { return vertex(row * columns() + column); }

private:
    const MSH_GridData &data() const { return payload<MSH_GridData>(); }
};

#include <host/msh/Placed.h>

namespace
{
// The first `count` components of a row; false for an attribute without such a row.
bool readRow(const ELM_Attribute *attribute, ELM_Offset row, int count, double *to)
{
    const ELM_NumericTuple *numbers = attribute ? attribute->numericTuple() : nullptr;
    if (!numbers || numbers->tupleSize() < count || row < 0 || row >= numbers->size())
        return false;
    numbers->visit([&](const auto &pages) {
        for (int i = 0; i < count; ++i)
            to[i] = double(pages.value(row, i));
    });
    return true;
}
}  // namespace

BAS_Mat3d MSH_Placed::transform() const
{
    BAS_Mat3d matrix;
    readRow(detail().find(ELM_OWNER_PRIMITIVE, ELM_SCOPE_PRIVATE, ELM_TRANSFORM_NAME), offset(), 9, &matrix[0][0]);
    return matrix;
}

BAS_Vec3d MSH_Placed::position() const
{
    BAS_Vec3d where(0.0);
    if (vertexCount() > 0)
        readRow(&detail().positions(), point(0), 3, &where.x);
    return where;
}

BAS_Mat4d MSH_Placed::placement() const { return BAS_Mat4d(transform(), position()); }

#include <host/bas/detail/SmallPolygon.h>

#include <host/bas/clones.h>
#include <host/bas/detail/EarRowCut.h>

namespace host
{
namespace
{
using Triangle = SmallPolygon::Triangle;

HOST_CLONES bool look(EarRow<float> &row, const EarCorners &corners, int count) { return row.begin(corners, count); }
HOST_CLONES bool look(EarRow<double> &row, const EarCorners &corners, int count) { return row.begin(corners, count); }
HOST_CLONES bool cutRow(EarRow<float> &row, Triangle *triangles) { return row.cut(triangles); }
HOST_CLONES bool cutRow(EarRow<double> &row, Triangle *triangles) { return row.cut(triangles); }
}  // namespace

bool SmallPolygon::beginPlain(const BAS_Vec2d *points, int count)
{
    if (count < 3 || count > kMostCorners)
        return false;
    count_ = count;
    corners_.take(points, count);
    fitsFloats_ = look(floats_, corners_, count);
    // Ten times the error of the area; between these sizes products of lengths are doubles like others.
    return fitsFloats_ && floats_.area() > 0.01f && floats_.reach() > 0x1p-100 && floats_.reach() < 0x1p100;
}

bool SmallPolygon::begin(const BAS_Vec2d *points, int count)
{
    if (count < 3 || count > kMostCorners)
        return false;
    count_ = count;
    corners_.take(points, count);
    fitsFloats_ = look(floats_, corners_, count);
    return fitsFloats_ || look(doubles_, corners_, count);
}

bool SmallPolygon::cut(Triangle *triangles)
{
    if (!fitsFloats_)
        return cutRow(doubles_, triangles);
    return cutRow(floats_, triangles) || (look(doubles_, corners_, count_) && cutRow(doubles_, triangles));
}
}  // namespace host

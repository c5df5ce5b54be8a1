#include <host/bas/detail/SmallPolygon.h>

#include <host/bas/detail/EarLanesCut.h>

namespace host
{
bool SmallPolygon::begin(const BAS_Vec2d *points, int count)
{
    if (count < 3 || count > kMostCorners)
        return false;
    count_ = count;
    for (int i = 0; i < count; ++i)
        corners_[i] = {points[i].x, points[i].y};
    fitsFloats_ = look(floats_);
    return fitsFloats_ || look(doubles_);
}

bool SmallPolygon::cut(Triangle *triangles)
{
    return fitsFloats_ ? cutBy(floats_, triangles) || (look(doubles_) && cutBy(doubles_, triangles))
                       : cutBy(doubles_, triangles);
}

template <class Real> bool SmallPolygon::look(EarLanes<Real, 1> &ears) const
{
    ears.template place<1>(0, corners_, count_);
    if (ears.failed() != 0)
        return false;
    ears.begin(count_);
    return ears.failed() == 0;
}

template <class Real> bool SmallPolygon::cutBy(EarLanes<Real, 1> &ears, Triangle *triangles) const
{
    typename EarLanes<Real, 1>::Triangles cuts[kMostCorners];
    ears.cut(cuts);
    if (ears.failed() != 0)
        return false;
    for (int i = 0; i + 2 < count_; ++i)
        triangles[i] = {int(cuts[i].a), int(cuts[i].b), int(cuts[i].c)};
    return true;
}
}  // namespace host

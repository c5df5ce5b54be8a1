#include <rq/data/Positions.h>
#include <rq/data/detail/blockFills.h>

namespace
{
template <class T>
void fillAndEnlarge(const RQ_DataArray &array, T *dest, int64_t start, int64_t length, BAS_BoundingBox &box, int tsize,
                    int stride)
{
    if (!RQisNumeric(array.getStorage()))
        return array.fillArray(dest, start, length, tsize, stride);
    const rq::BlockShape shape(array, tsize, stride);
    rq::fillAndBound(dest, length, shape, box, [&](T *to, int64_t first, int64_t count, int step) {
        array.fillArray(to, start + first, count, shape.components, step);
    });
}
}  // namespace

void RQ_DataArray::doFillVec3BBox(double *dest, int64_t start, int64_t length, BAS_BoundingBox &bbox, int tsize,
                                  int stride) const
{
    fillAndEnlarge(*this, dest, start, length, bbox, tsize, stride);
}

void RQ_DataArray::doFillVec3BBox(float *dest, int64_t start, int64_t length, BAS_BoundingBox &bbox, int tsize,
                                  int stride) const
{
    fillAndEnlarge(*this, dest, start, length, bbox, tsize, stride);
}

void RQ_DataArray::enlargeBounds(BAS_BoundingBox &box) const
{
    const int64_t tuple = getTupleSize();
    if (tuple < 3 || entries() < 1 || !RQisNumeric(getStorage()))
        return;
    if (getTypeInfo() == RQ_TYPE_HPOINT && tuple > 3)
    {
        const rq::Positions positions(*this);
        // A point costs some 3 ns.
        constexpr int64_t kPointsPerBlock = 8192;
        box.enlarge(host::parallelReduce(
            positions.entries(), kPointsPerBlock, BAS_BoundingBox(),
            [&](int64_t begin, int64_t end) {
                BAS_BoundingBox part;
                for (int64_t i = begin; i < end; ++i)
                    part.enlarge(BAS_Vec3f(positions[i]));
                return part;
            },
            [](BAS_BoundingBox &into, const BAS_BoundingBox &from) { into.enlarge(from); }));
        return;
    }
    std::vector<double> min(static_cast<size_t>(tuple)), max(static_cast<size_t>(tuple));
    getMinMax(min.data(), max.data());
    BAS_Vec3f low(std::numeric_limits<float>::quiet_NaN()), high(low);
    for (int axis = 0; axis < 3; ++axis)
        if (min[size_t(axis)] <= max[size_t(axis)])
        {
            low[axis] = float(min[size_t(axis)]);
            high[axis] = float(max[size_t(axis)]);
        }
    box.enlarge(low);
    box.enlarge(high);
}

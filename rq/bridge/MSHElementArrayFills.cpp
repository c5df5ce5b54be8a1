#include <rq/bridge/detail/elementRows.h>
#include <rq/data/detail/blockFills.h>

void RQ_MSHElementArray::doFillQuantizedArray(uint8_t *data, int64_t start, int64_t length, int tsize, int stride,
                                              double black, double white) const
{
    const rq::BlockShape shape(*this, tsize, stride);
    const Target::Scale scale{black, white};
    if (hasArrayEntries())
        RQ_DataArray::doFillQuantizedArray(data, start, length, tsize, stride, black, white);
    else if (length > 0 && shape.components > 0)
        fillRows({reinterpret_cast<char *>(data), RQ_STORAGE_UINT8, shape.components, shape.stride, &scale}, start, length);
}

void RQ_MSHElementArray::doExtendedQuantizedFill(uint8_t *data, int64_t start, int64_t length, int tsize, int nrepeats,
                                                 int stride, double black, double white) const
{
    const rq::BlockShape shape(*this, tsize, stride);
    rq::fillRepeated(data, length, shape, nrepeats, [&](uint8_t *to, int64_t first, int64_t count, int step) {
        RQ_MSHElementArray::doFillQuantizedArray(to, start + first, count, shape.components, step, black, white);
    });
}

template <class T>
void RQ_MSHElementArray::fillBounded(T *dest, int64_t start, int64_t length, BAS_BoundingBox &box, int tsize,
                                     int stride) const
{
    if (hasArrayEntries() || !RQisNumeric(storage_))
        return RQ_DataArray::doFillVec3BBox(dest, start, length, box, tsize, stride);
    const rq::BlockShape shape(*this, tsize, stride);
    rq::fillAndBound(dest, length, shape, box, [&](T *to, int64_t first, int64_t count, int step) {
        fillRows({reinterpret_cast<char *>(to), RQstorageOf<T>, shape.components, step}, start + first, count);
    });
}

void RQ_MSHElementArray::doFillVec3BBox(double *dest, int64_t start, int64_t length, BAS_BoundingBox &bbox, int tsize,
                                        int stride) const
{
    fillBounded(dest, start, length, bbox, tsize, stride);
}

void RQ_MSHElementArray::doFillVec3BBox(float *dest, int64_t start, int64_t length, BAS_BoundingBox &bbox, int tsize,
                                        int stride) const
{
    fillBounded(dest, start, length, bbox, tsize, stride);
}

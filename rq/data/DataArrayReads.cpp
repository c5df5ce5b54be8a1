#include <host/bas/CopyCounter.h>
#include <rq/data/detail/blockFills.h>
#include <rq/data/detail/copyValues.h>
#include <rq/data/detail/numericTypes.h>

// The getters that not every array defines go through a wider one.
int8_t RQ_DataArray::getI8(int64_t offset, int idx) const { return int8_t(getI32(offset, idx)); }
int16_t RQ_DataArray::getI16(int64_t offset, int idx) const { return int16_t(getI32(offset, idx)); }
int64_t RQ_DataArray::getI64(int64_t offset, int idx) const { return getI32(offset, idx); }
PLT_Half RQ_DataArray::getF16(int64_t offset, int idx) const { return PLT_Half(getF32(offset, idx)); }
double RQ_DataArray::getF64(int64_t offset, int idx) const { return getF32(offset, idx); }

template <class T> const T *RQ_DataArray::makeArray(RQ_DataArrayHandle &buffer) const
{
    const void *backing = getBackingData();
    if (backing && getStorage() == RQstorageOf<T>)
    {
        buffer = const_cast<RQ_DataArray *>(this);
        return static_cast<const T *>(backing);
    }
    const BAS_IntrusivePtr<RQ_DANumeric<T>> copy = rq::copyValues<T>(*this);
    BAS_CopyCounter::add(backing ? BAS_COPY_CONVERT : BAS_COPY_GATHER,
                         copy->entries() * copy->getTupleSize() * int64_t(sizeof(T)));
    buffer = copy;
    return copy->data();
}

#define RQ_DEFINE(T, NAME, ARRAY)                                                                                           \
    bool RQ_DataArray::get##ARRAY(BAS_ValArray<T> &, int64_t) const { return false; }                                       \
    const T *RQ_DataArray::get##NAME##Array(RQ_DataArrayHandle &buffer) const { return makeArray<T>(buffer); }              \
    void RQ_DataArray::extendedFill(T *data, int64_t start, int64_t length, int tsize, int nrepeats, int stride) const      \
    {                                                                                                                       \
        const rq::BlockShape shape(*this, tsize, stride);                                                                   \
        rq::fillRepeated(data, length, shape, nrepeats, [&](T *out, int64_t first, int64_t count, int step) {               \
            doFillArray(out, start + first, count, shape.components, step);                                                 \
        });                                                                                                                 \
    }                                                                                                                       \
    const T *RQ_DataArray::get(int64_t offset, T *out, int size) const                                                      \
    {                                                                                                                       \
        const int64_t known = std::min<int64_t>(size, getTupleSize());                                                      \
        for (int c = 0; c < size; ++c)                                                                                      \
            out[c] = c < known ? get##NAME(offset, c) : T(0);                                                               \
        return out;                                                                                                         \
    }                                                                                                                       \
    void RQ_DataArray::doImport(int64_t offset, T *data, int size) const                                                    \
    {                                                                                                                       \
        const int64_t tuple = getTupleSize();                                                                               \
        const int64_t count = size != 0 && tuple >= size ? size : tuple;                                                    \
        for (int64_t c = 0; c < count; ++c)                                                                                 \
            data[c] = get##NAME(offset, int(c));                                                                            \
    }                                                                                                                       \
    void RQ_DataArray::doImportArray(int64_t offset, BAS_ValArray<T> &values) const { get##ARRAY(values, offset); }         \
    void RQ_DataArray::doFillArray(T *data, int64_t start, int64_t length, int tsize, int stride) const                     \
    {                                                                                                                       \
        const rq::BlockShape shape(*this, tsize, stride);                                                                   \
        if (shape.components < 1)                                                                                           \
            return;                                                                                                         \
        for (int64_t i = 0; i < length; ++i)                                                                                \
            doImport(start + i, data + i * shape.stride, shape.components);                                                 \
    }                                                                                                                       \
    void RQ_DataArray::doFillArrayAttr(BAS_Array<T> &data, BAS_Array<int> &sizes, int64_t start, int64_t length) const      \
    {                                                                                                                       \
        data.clear();                                                                                                       \
        sizes.clear();                                                                                                      \
        BAS_ValArray<T> values;                                                                                             \
        for (int64_t i = start; i < start + length; ++i)                                                                    \
        {                                                                                                                   \
            values.clear();                                                                                                 \
            doImportArray(i, values);                                                                                       \
            data.insert(data.end(), values.begin(), values.end());                                                          \
            sizes.push_back(int(values.size()));                                                                            \
        }                                                                                                                   \
    }
RQ_NUMERIC_TYPES(RQ_DEFINE)
#undef RQ_DEFINE

void RQ_DataArray::doExtendedQuantizedFill(uint8_t *data, int64_t start, int64_t length, int tsize, int nrepeats, int stride,
                                           double black, double white) const
{
    const rq::BlockShape shape(*this, tsize, stride);
    rq::fillRepeated(data, length, shape, nrepeats, [&](uint8_t *out, int64_t first, int64_t count, int step) {
        doFillQuantizedArray(out, start + first, count, shape.components, step, black, white);
    });
}

void RQ_DataArray::extendedFillArray(uint8_t *data, int64_t start, int64_t length, int tsize, int nrepeats, int stride,
                                     double black, double white) const
{
    doExtendedQuantizedFill(data, start, length, tsize, nrepeats, stride, black, white);
}

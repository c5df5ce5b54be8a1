#include <host/bas/Parallel.h>
#include <rq/data/detail/blocks.h>
#include <rq/data/detail/quantiseRows.h>

void RQ_DataArray::doImportQuantized(int64_t offset, uint8_t *data, int size, double black, double white) const
{
    const int64_t tuple = getTupleSize();
    const int count = int(size != 0 && tuple >= size ? size : tuple);
    if (count > 0)
        doFillQuantizedArray(data, offset, 1, count, count, black, white);
}

void RQ_DataArray::doFillQuantizedArray(uint8_t *data, int64_t start, int64_t length, int tsize, int stride, double black,
                                        double white) const
{
    const rq::BlockShape shape(*this, tsize, stride);
    if (length < 1 || shape.components < 1)
        return;
    if (const char *backing = static_cast<const char *>(getBackingData()))
        return rq::quantiseRows(backing + start * getTupleSize() * RQsizeof(getStorage()), getStorage(), getTupleSize(),
                                data, shape.stride, shape.components, length, black, white);

    // Values of views cost one to ten nanoseconds each.
    host::parallelForRange(length, 16 * rq::kBlockEntries, [&](int64_t begin, int64_t end) {
        const int64_t height = rq::blockEntries(shape.components);
        std::vector<double> block(size_t(std::min(end - begin, height) * shape.components));
        for (int64_t first = begin; first < end; first += height)
        {
            const int64_t count = std::min(end - first, height);
            fillArray(block.data(), start + first, count, shape.components, shape.components);
            rq::quantiseRows(block.data(), RQ_STORAGE_REAL64, shape.components, data + first * shape.stride, shape.stride,
                             shape.components, count, black, white);
        }
    });
}

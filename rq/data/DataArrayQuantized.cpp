#include <rq/data/detail/blocks.h>

namespace
{
// A value on the way from black to white; not-a-number is black.
uint8_t quantise(double value, double black, double white)
{
    if (black == white)
        return value >= black ? 255 : 0;
    const double t = (value - black) / (white - black);
    return t > 0.0 ? uint8_t(std::min(t, 1.0) * 255.0 + 0.5) : 0;
}
}  // namespace

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
    std::vector<double> block(size_t(std::min(length, rq::kBlockEntries) * shape.components));
    for (int64_t first = 0; first < length; first += rq::kBlockEntries)
    {
        const int64_t count = std::min(length - first, rq::kBlockEntries);
        fillArray(block.data(), start + first, count, shape.components, shape.components);
        const double *value = block.data();
        for (int64_t i = first; i < first + count; ++i)
            for (int c = 0; c < shape.components; ++c)
                data[i * shape.stride + c] = quantise(*value++, black, white);
    }
}

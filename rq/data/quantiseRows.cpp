#include <rq/data/detail/quantiseRows.h>

#include <algorithm>

#include <host/bas/Parallel.h>
#include <rq/data/NumericTypes.h>
#include <host/bas/clones.h>

namespace rq
{
namespace
{
// A value costs 0.6 to 1.5 ns, so a piece is some 40 to 100 us of work.
constexpr int64_t kValuesPerPiece = 65536;

// Values that are between the two steps of quantising: they stay in the first-level cache.
constexpr int64_t kBufferValues = 256;

/// Call `run(place)` with what finds the place of a value on the way from black, 0, to white, 1.
template <class Run> void visitScale(double black, double white, Run &&run)
{
    if (black == white)
        run([=](double value) { return value >= black ? 1.0 : 0.0; });
    else
        run([=](double value) { return (value - black) / (white - black); });
}

// Not-a-number is black: it fails the comparison.  None of the two hangs on the other, so that loops vectorise.
double clamped(double place)
{
    const double low = place > 0.0 ? place : 0.0;
    return low < 1.0 ? low : 1.0;
}
uint8_t byteOf(double place) { return uint8_t(int32_t(place * 255.0 + 0.5)); }

template <class T> HOST_CLONES void quantiseSpan(const T *from, uint8_t *to, int64_t count, double black, double white)
{
    // In one loop the compiler would turn the comparisons into masks of bytes: 1.0 against 0.6 ns a value.
    double places[kBufferValues];
    for (int64_t first = 0; first < count; first += kBufferValues)
    {
        const int64_t length = std::min(count - first, kBufferValues);
        visitScale(black, white, [&](auto place) {
            for (int64_t i = 0; i < length; ++i)
                places[i] = clamped(place(double(from[first + i])));
        });
        for (int64_t i = 0; i < length; ++i)
            to[first + i] = byteOf(places[i]);
    }
}

template <class T>
void quantiseTable(const T *from, int64_t fromStride, uint8_t *to, int64_t toStride, int64_t components, int64_t rows,
                   double black, double white)
{
    if (components == fromStride && components == toStride)
        return quantiseSpan(from, to, rows * components, black, white);
    visitScale(black, white, [&](auto place) {
        for (int64_t row = 0; row < rows; ++row)
            for (int64_t c = 0; c < components; ++c)
                to[row * toStride + c] = byteOf(clamped(place(double(from[row * fromStride + c]))));
    });
}
}  // namespace

void quantiseRows(const void *from, RQ_Storage fromStorage, int64_t fromStride, uint8_t *to, int64_t toStride,
                  int64_t components, int64_t rows, double black, double white)
{
    if (components < 1)
        return;
    dispatchStorage(fromStorage, [&](auto tag) {
        const auto *values = static_cast<const typename decltype(tag)::type *>(from);
        host::parallelForRange(rows, std::max<int64_t>(1, kValuesPerPiece / components), [&](int64_t begin, int64_t end) {
            quantiseTable(values + begin * fromStride, fromStride, to + begin * toStride, toStride, components, end - begin,
                          black, white);
        });
    });
}
}  // namespace rq

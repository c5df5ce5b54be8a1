#include <rq/data/detail/quantiseRows.h>

#include <algorithm>
#include <utility>

#include <host/bas/Parallel.h>
#include <rq/data/NumericTypes.h>
#include <rq/data/detail/clones.h>

namespace rq
{
namespace
{
// A value costs 0.5 to 2 ns, so a piece is some 30 to 120 us of work.
constexpr int64_t kValuesPerPiece = 65536;

/// The way from black to white.  Where both are one value it is a step.
struct Scale
{
    double black, white;

    // Not-a-number is black: it fails the comparisons.  None of them hangs on another, so that loops vectorise.
    uint8_t operator()(double value) const
    {
        const double t = (value - black) / (white - black), low = t > 0.0 ? t : 0.0, inside = low < 1.0 ? low : 1.0;
        return uint8_t(int32_t(inside * 255.0 + 0.5));
    }
    uint8_t step(double value) const { return value >= black ? 255 : 0; }
};

template <class T> struct Rows
{
    const T *from;
    int64_t fromStride;
    uint8_t *to;
    int64_t toStride, components, rows;
};

template <class T> RQ_CLONES void quantiseTable(Rows<T> table, Scale scale)
{
    for (; table.rows > 0; --table.rows, table.from += table.fromStride, table.to += table.toStride)
        if (scale.black == scale.white)
            for (int64_t i = 0; i < table.components; ++i)
                table.to[i] = scale.step(double(table.from[i]));
        else
            for (int64_t i = 0; i < table.components; ++i)
                table.to[i] = scale(double(table.from[i]));
}
}  // namespace

void quantiseRows(const void *from, RQ_Storage fromStorage, int64_t fromStride, uint8_t *to, int64_t toStride,
                  int64_t components, int64_t rows, double black, double white)
{
    if (components < 1)
        return;
    const Scale scale{black, white};
    const bool packed = components == fromStride && components == toStride;
    dispatchStorage(fromStorage, [&](auto tag) {
        using T = typename decltype(tag)::type;
        const auto quantise = [&](int64_t begin, int64_t end) {
            Rows<T> table = {static_cast<const T *>(from) + begin * fromStride,
                             fromStride,
                             to + begin * toStride,
                             toStride,
                             components,
                             end - begin};
            if (packed)  // one long row
                table.components *= std::exchange(table.rows, 1);
            quantiseTable(table, scale);
        };
        host::parallelForRange(rows, std::max<int64_t>(1, kValuesPerPiece / components), quantise);
    });
}
}  // namespace rq

#pragma once

#include <limits>

#include <host/bas/Parallel.h>
#include <rq/data/detail/blocks.h>

// Fills that do more than one thing to a block: block by block, while it is in the first cache.  `fill(T *to, int64_t first,
// int64_t count, int stride)` writes entries [first, first + count) in rows `stride` values apart.
namespace rq
{
/// Write every entry `nrepeats` times in a row.
template <class T, class Fill> void fillRepeated(T *data, int64_t length, const BlockShape &shape, int nrepeats, Fill &&fill)
{
    if (nrepeats < 1 || shape.components < 1)
        return;
    const int64_t step = int64_t(shape.stride) * nrepeats;
    const int64_t block = step > std::numeric_limits<int>::max() ? 1 : kBlockEntries;
    host::parallelForRange(length, kBlockEntries, [&](int64_t begin, int64_t end) {
        for (int64_t first = begin; first < end; first += block)
        {
            const int64_t count = std::min(end - first, block);
            fill(data + first * step, first, count, block == 1 ? shape.stride : int(step));
            for (int64_t i = first; i < first + count; ++i)
                for (int64_t repeat = 1; repeat < nrepeats; ++repeat)
                    std::copy_n(data + i * step, shape.components, data + i * step + repeat * shape.stride);
        }
    });
}

/// Enlarge `box` by the first three components of every row.
template <class T, class Fill>
void fillAndBound(T *data, int64_t length, const BlockShape &shape, BAS_BoundingBox &box, Fill &&fill)
{
    box.enlarge(host::parallelReduce(
        std::max<int64_t>(0, length), kBlockEntries, BAS_BoundingBox(),
        [&](int64_t begin, int64_t end) {
            BAS_BoundingBox part;
            fill(data + begin * shape.stride, begin, end - begin, shape.stride);
            for (const T *row = data + begin * shape.stride; shape.components >= 3 && begin < end;
                 ++begin, row += shape.stride)
                part.enlarge(BAS_Vec3f(float(row[0]), float(row[1]), float(row[2])));
            return part;
        },
        [](BAS_BoundingBox &into, const BAS_BoundingBox &from) { into.enlarge(from); }));
}
}  // namespace rq

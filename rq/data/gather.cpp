#include <algorithm>
#include <cstring>
#include <type_traits>

#include <host/bas/Parallel.h>
#include <host/bas/stream.h>
#include <rq/data/convert.h>

namespace rq
{
namespace
{
// A row costs 1 ns along a mesh and 10 in no order, so a piece is some 20 to 200 us of work.
constexpr int64_t kValuesPerPiece = 65536;

// Rows that are converted pass through a local buffer of so many values.
constexpr int64_t kBufferValues = 1024;

/// Rows of bytes: gathering does not look at values.  Handed on by value, so that no store can change them for the compiler.
template <class Index> struct Rows
{
    const char *from;
    int64_t fromStride;
    const Index *indices;
    char *to;
    int64_t toStride;
    int64_t count;

    const char *source(int64_t row) const { return from + int64_t(indices[row]) * fromStride; }
    char *target(int64_t row) const { return to + row * toStride; }
};

template <class T> T load(const char *at)
{
    T value;
    std::memcpy(&value, at, sizeof(value));
    return value;
}

/// Move whole groups of packed rows of three 32-bit values past the caches, from the first that lies on a store's boundary;
/// answers where the groups begin and end.
template <class Index> std::pair<int64_t, int64_t> streamTriples(Rows<Index> rows)
{
#if defined(__x86_64__)
    // Four rows are three stores.
    const auto join = [](__m128i low, __m128i high) { return _mm_unpacklo_epi64(low, high); };
    const auto pair = [](const char *at) { return _mm_cvtsi64_si128(load<int64_t>(at)); };
    const auto ends = [](const char *a, const char *b) {
        return _mm_unpacklo_epi32(_mm_cvtsi32_si128(load<int32_t>(a + 8)), _mm_cvtsi32_si128(load<int32_t>(b)));
    };
    int64_t first = 0;
    while (first < rows.count && reinterpret_cast<uintptr_t>(rows.target(first)) % sizeof(__m128) != 0)
        if (++first == 4)
            return {0, 0};
    int64_t row = first;
    for (; row + 4 <= rows.count; row += 4)
    {
        const char *a = rows.source(row), *b = rows.source(row + 1), *c = rows.source(row + 2), *d = rows.source(row + 3);
        __m128i *out = reinterpret_cast<__m128i *>(rows.target(row));
        _mm_stream_si128(out, join(pair(a), ends(a, b)));
        _mm_stream_si128(out + 1, join(pair(b + 4), pair(c)));
        _mm_stream_si128(out + 2, join(ends(c, d), pair(d + 4)));
    }
    host::finishStream();
    return {first, row};
#else
    return {0, 0};
#endif
}

/// Move whole groups of packed words from `row` on, those of consecutive rows at once: lists of a detail's elements are
/// mostly runs.  Answers where the groups end.
template <int kBytes, class Index> int64_t moveGroups(Rows<Index> rows, int64_t row, int64_t end)
{
    constexpr int64_t kGroup = 8;
    using Unsigned = std::make_unsigned_t<Index>;
    for (; row + kGroup <= end; row += kGroup)
    {
        const Index *group = rows.indices + row;
        Unsigned gaps = 0;
        for (int64_t i = 0; i < kGroup; ++i)
            gaps |= Unsigned(group[i]) ^ (Unsigned(group[0]) + Unsigned(i));
        if (gaps == 0)
            std::memcpy(rows.target(row), rows.source(row), kGroup * kBytes);
        else
            for (int64_t i = 0; i < kGroup; ++i)
                std::memcpy(rows.target(row + i), rows.source(row + i), kBytes);
    }
    return row;
}

template <int kBytes, class Index> void moveRows(Rows<Index> rows, int64_t begin, int64_t end)
{
    if (kBytes <= 8 && rows.fromStride == kBytes && rows.toStride == kBytes)
        begin = moveGroups<kBytes>(rows, begin, end);
    for (int64_t row = begin; row < end; ++row)
        std::memcpy(rows.target(row), rows.source(row), kBytes);
}

/// A size that is known when compiling makes a few moves of each copy.
template <class Index> void moveRows(Rows<Index> rows, int64_t bytes, int64_t begin, int64_t end)
{
    switch (bytes)
    {
    case 1:
        return moveRows<1>(rows, begin, end);
    case 2:
        return moveRows<2>(rows, begin, end);
    case 4:
        return moveRows<4>(rows, begin, end);
    case 8:
        return moveRows<8>(rows, begin, end);
    case 12:
        return moveRows<12>(rows, begin, end);
    case 16:
        return moveRows<16>(rows, begin, end);
    case 24:
        return moveRows<24>(rows, begin, end);
    default:
        for (int64_t row = begin; row < end; ++row)
            std::memcpy(rows.target(row), rows.source(row), size_t(bytes));
    }
}

template <class Index> void moveRows(Rows<Index> rows, int64_t bytes, bool streamed)
{
    std::pair<int64_t, int64_t> done = {0, 0};
    if (streamed && bytes == 12 && rows.toStride == 12)
        done = streamTriples(rows);
    moveRows(rows, bytes, 0, done.first);
    moveRows(rows, bytes, done.second, rows.count);
}

/// Gather into a buffer and convert from there.  Rows of more components than it holds go in parts.
template <class Index>
void convertGathered(Rows<Index> rows, RQ_Storage fromStorage, RQ_Storage toStorage, int64_t components)
{
    alignas(8) char buffer[kBufferValues * sizeof(int64_t)];
    const int fromSize = RQsizeof(fromStorage), toSize = RQsizeof(toStorage);
    const int64_t width = std::min(components, kBufferValues), height = kBufferValues / width;
    for (int64_t c = 0; c < components; c += width)
        for (int64_t row = 0; row < rows.count; row += height)
        {
            const int64_t columns = std::min(width, components - c), count = std::min(height, rows.count - row);
            const int64_t bytes = columns * fromSize;
            moveRows(Rows<Index>{rows.from + c * fromSize, rows.fromStride, rows.indices + row, buffer, bytes, count}, bytes,
                     false);
            convertRows(buffer, fromStorage, columns, rows.target(row) + c * toSize, toStorage, rows.toStride / toSize,
                        columns, count);
        }
}

template <class Index>
void gatherParallel(const void *from, RQ_Storage fromStorage, int64_t fromStride, const Index *indices, void *to,
                    RQ_Storage toStorage, int64_t toStride, int64_t components, int64_t count)
{
    if (components < 1 || !RQisNumeric(fromStorage) || !RQisNumeric(toStorage))
        return;
    const int fromSize = RQsizeof(fromStorage), toSize = RQsizeof(toStorage);
    const bool streamed = count * toStride * toSize >= host::kStreamedBytes;
    const auto gather = [&](int64_t begin, int64_t end) {
        const Rows<Index> rows = {static_cast<const char *>(from),
                                  fromStride * fromSize,
                                  indices + begin,
                                  static_cast<char *>(to) + begin * toStride * toSize,
                                  toStride * toSize,
                                  end - begin};
        if (fromStorage == toStorage)
            moveRows(rows, components * fromSize, streamed);
        else
            convertGathered(rows, fromStorage, toStorage, components);
    };
    const int64_t piece = std::max<int64_t>(1, kValuesPerPiece / components);
    if (count <= piece)
        gather(0, count);
    else
        host::parallelForRange(count, piece, gather);
}
}  // namespace

void gatherRows(const void *from, RQ_Storage fromStorage, int64_t fromStride, const int64_t *indices, void *to,
                RQ_Storage toStorage, int64_t toStride, int64_t components, int64_t rows)
{
    gatherParallel(from, fromStorage, fromStride, indices, to, toStorage, toStride, components, rows);
}

void gatherRows(const void *from, RQ_Storage fromStorage, int64_t fromStride, const int32_t *indices, void *to,
                RQ_Storage toStorage, int64_t toStride, int64_t components, int64_t rows)
{
    gatherParallel(from, fromStorage, fromStride, indices, to, toStorage, toStride, components, rows);
}
}  // namespace rq

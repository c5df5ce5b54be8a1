#include <rq/data/convert.h>

#include <algorithm>
#include <cstring>

#include <host/bas/Parallel.h>
#include <host/bas/stream.h>
#include <host/bas/clones.h>
#include <rq/data/detail/lanes.h>

namespace rq
{
namespace
{
// A value costs 0.1 to 0.6 ns, so a piece is some 10 to 40 us of work.
constexpr int64_t kValuesPerPiece = 65536;

// Values that pass through a local buffer at a time.
constexpr int64_t kBufferValues = 1024;

struct Rows
{
    const void *from;
    int64_t fromStride;
    void *to;
    int64_t toStride;
    int64_t components;
    int64_t rows;
    bool streamed;  // whether the whole output is so large that it passes the caches by
};

using RowsFunction = void (*)(const Rows &);

template <class To, class From> HOST_CLONES void convertIntegers(const From *from, To *to, int64_t count)
{
    for (int64_t i = 0; i < count; ++i)
        to[i] = RQconvert<To>(from[i]);
}

#if defined(__x86_64__)
const bool kHasLanes = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("f16c");

template <class To, class From> int64_t convertGroups(const From *from, To *to, int64_t count)
{
    return kHasLanes ? lanes::convertGroups(from, to, count) : 0;
}
#else
template <class To, class From> int64_t convertGroups(const From *, To *, int64_t) { return 0; }
#endif

template <class To, class From> void convertSpan(const From *from, To *to, int64_t count)
{
    if constexpr (std::same_as<To, From>)
        std::memcpy(static_cast<void *>(to), from, size_t(count) * sizeof(To));
    else if constexpr (std::is_integral_v<To> && std::is_integral_v<From>)
        convertIntegers(from, to, count);
    else
        for (int64_t i = convertGroups(from, to, count); i < count; ++i)
            to[i] = RQconvert<To>(from[i]);
}

template <class To, class From> void convertTable(const Rows &table)
{
    const From *from = static_cast<const From *>(table.from);
    To *to = static_cast<To *>(table.to);
    if (table.components == table.fromStride && table.components == table.toStride)
        host::writeBlocks(to, table.rows * table.components, table.streamed && sizeof(To) >= 2 * sizeof(From),
                          [&](To *out, int64_t first, int64_t count) { convertSpan(from + first, out, count); });
    else
        for (int64_t row = 0; row < table.rows; ++row)
            for (int64_t c = 0; c < table.components; ++c)
                to[row * table.toStride + c] = RQconvert<To>(from[row * table.fromStride + c]);
}

// The one place where two storages meet: 64 loops.
RowsFunction findFunction(RQ_Storage fromStorage, RQ_Storage toStorage)
{
    RowsFunction function = nullptr;
    dispatchStorage(fromStorage, [&](auto fromTag) {
        dispatchStorage(toStorage, [&](auto toTag) {
            function = convertTable<typename decltype(toTag)::type, typename decltype(fromTag)::type>;
        });
    });
    return function;
}
}  // namespace

void convertRows(const void *from, RQ_Storage fromStorage, int64_t fromStride, void *to, RQ_Storage toStorage,
                 int64_t toStride, int64_t components, int64_t rows)
{
    const RowsFunction function = findFunction(fromStorage, toStorage);
    if (!function || components < 1 || rows < 1 || (from == to && fromStorage == toStorage && fromStride == toStride))
        return;
    if (rows <= kValuesPerPiece / components)
        return function({from, fromStride, to, toStride, components, rows, false});
    const int64_t fromRow = fromStride * RQsizeof(fromStorage);
    const int64_t toRow = toStride * RQsizeof(toStorage);
    host::parallelForRange(rows, std::max<int64_t>(1, kValuesPerPiece / components), [&](int64_t begin, int64_t end) {
        function({static_cast<const char *>(from) + begin * fromRow, fromStride, static_cast<char *>(to) + begin * toRow,
                  toStride, components, end - begin, rows * toRow >= host::kStreamedBytes});
    });
}

void convertValues(const void *from, RQ_Storage fromStorage, void *to, RQ_Storage toStorage, int64_t count)
{
    convertRows(from, fromStorage, 1, to, toStorage, 1, 1, count);
}
}  // namespace rq

#pragma once

#include <algorithm>
#include <cstdint>
#include <type_traits>
#include <vector>

#include <host/plt/types.h>

/// What the scheduler offers, and whether parallel paths make sense.
class HOST_API BAS_Threads
{
public:
    /// Number of workers that the current arena may use, at least 1.
    static int processors();

    /// False when the process is limited to one worker.
    static bool enabled();

    /// Limit the workers of the process until the object is destroyed.
    class HOST_API Limit
    {
    public:
        explicit Limit(int workers);
        ~Limit();
        Limit(const Limit &) = delete;
        Limit &operator=(const Limit &) = delete;

    private:
        void *control_;
    };
};

namespace host
{
/// A loop body without its type: run items [begin, end).
using RangeFunction = void (*)(void *context, int64_t begin, int64_t end);

/// The one door to the scheduler: run `function` over pieces of [0, count) of at least `grain` items each.
///
/// Runs on the calling thread alone when one piece suffices.  Work inherits the caller's arena and cancels with its context.
/// Never call it while holding a lock that the body, or any other task, may want.
HOST_API void parallelRun(int64_t count, int64_t grain, RangeFunction function, void *context);

/// Run `body(begin, end)` over pieces of [0, count).  Which pieces is undefined: write only what belongs to an item.
template <class Body> void parallelForRange(int64_t count, int64_t grain, Body &&body)
{
    using Plain = std::remove_reference_t<Body>;
    parallelRun(
        count, grain, [](void *context, int64_t begin, int64_t end) { (*static_cast<Plain *>(context))(begin, end); },
        const_cast<std::remove_const_t<Plain> *>(&body));
}

/// Run `body(i)` for every item.
template <class Body> void parallelFor(int64_t count, int64_t grain, Body &&body)
{
    parallelForRange(count, grain, [&body](int64_t begin, int64_t end) {
        for (int64_t i = begin; i < end; ++i)
            body(i);
    });
}

/// Map fixed blocks of `block` items and merge the results in block order, so that the result has the same bits for any
/// number of threads.  `map(begin, end)` returns a T; `merge(into, from)` adds a later block to an earlier one.
template <class T, class Map, class Merge>
T parallelReduce(int64_t count, int64_t block, T identity, Map &&map, Merge &&merge)
{
    static_assert(!std::is_same_v<T, bool>,
                  "a vector of bool has eight results a byte: threads would overwrite each other's");
    const int64_t blocks = (count + block - 1) / block;
    std::vector<T> partial(size_t(blocks), identity);
    parallelFor(blocks, 1, [&](int64_t b) { partial[size_t(b)] = map(b * block, std::min(count, (b + 1) * block)); });
    T result = std::move(identity);
    for (const T &part : partial)
        merge(result, part);
    return result;
}

/// Cut [0, count) where the running weight passes multiples of `weight`: items of very different size (faces) make even
/// pieces.  `endOf(i)` is the running total up to and including item i.  Runs `body(begin, end)`.
template <class EndOf, class Body> void parallelForWeighted(int64_t count, int64_t weight, EndOf &&endOf, Body &&body)
{
    if (count < 1)
        return;
    const int64_t total = endOf(count - 1);
    const int64_t pieces = std::max<int64_t>(1, std::min(count, total / std::max<int64_t>(1, weight)));
    const auto firstOf = [&](int64_t piece) {
        // The first item whose running total passes the piece's share.
        const int64_t share = int64_t(double(total) * double(piece) / double(pieces));
        int64_t low = 0, high = count;
        while (low < high)
        {
            const int64_t middle = low + (high - low) / 2;
            if (endOf(middle) <= share)
                low = middle + 1;
            else
                high = middle;
        }
        return piece == 0 ? 0 : piece == pieces ? count : low;
    };
    parallelFor(pieces, 1, [&](int64_t piece) {
        const int64_t begin = firstOf(piece), end = firstOf(piece + 1);
        if (begin < end)
            body(begin, end);
    });
}
}  // namespace host

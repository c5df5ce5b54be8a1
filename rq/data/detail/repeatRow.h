#pragma once

#include <algorithm>

#include <host/bas/stream.h>

namespace rq
{
/// Repeat the first of `rows` rows of `components` values each, `stride` values apart.
template <class T> void repeatRow(T *rows, int64_t count, int components, int stride)
{
    if (components != stride)
        for (int64_t i = 1; i < count; ++i)
            std::copy_n(rows, components, rows + i * stride);
    else if (components == 1)
        host::writeBlocks(rows, count, [value = *rows](T *to, int64_t, int64_t length) { std::fill_n(to, length, value); });
    else
    {
        // Copies of copies, up to a source that stays in the first cache.
        constexpr int64_t kSourceValues = 2048;
        const int64_t total = count * components;
        for (int64_t done = components; done < total;)
        {
            const int64_t source = std::min(done, std::max<int64_t>(components, kSourceValues / components * components));
            const int64_t length = std::min(source, total - done);
            std::copy_n(rows, length, rows + done);
            done += length;
        }
    }
}
}  // namespace rq

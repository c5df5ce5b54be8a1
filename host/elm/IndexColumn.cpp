#include <host/elm/IndexColumn.h>

#include <atomic>
#include <limits>
#include <type_traits>

#include <host/bas/stream.h>

namespace
{
constexpr bool fits32(int64_t value)
{
    return value >= std::numeric_limits<int32_t>::min() && value <= std::numeric_limits<int32_t>::max();
}

// True when every value lies in [low, high).  No early way out, so that the loop vectorises.
template <class Index> bool allWithin(const Index *values, int64_t count, int64_t low, int64_t high)
{
    Index smallest = std::numeric_limits<Index>::max(), largest = std::numeric_limits<Index>::min();
    for (int64_t i = 0; i < count; ++i)
    {
        smallest = std::min(smallest, values[i]);
        largest = std::max(largest, values[i]);
    }
    return count == 0 || (int64_t(smallest) >= low && int64_t(largest) < high);
}

template <class To, class From> void copyIndices(To *to, const From *from, int64_t count, bool streamed)
{
    if constexpr (std::is_same_v<To, From>)
        host::copyBytes(to, from, size_t(count) * sizeof(To), streamed);
    else
        std::copy_n(from, count, to);
}

template <class To, class Pages>
void copyValues(To *to, const Pages &pages, const ELM_OffsetList &rows, int64_t first, int64_t count)
{
    if (!rows.isTrivial())
    {
        rows.visit([&](const auto &offsets) {
            const auto reader = pages.reader();
            for (int64_t i = 0; i < count; ++i)
                to[i] = To(reader.value(offsets[first + i]));
        });
        return;
    }
    if (count < 1)
        return;
    pages.forEachRun(rows[first], count, [&](const auto *values, int64_t length, bool repeated) {
        if (repeated)
            std::fill_n(to, length, To(*values));
        else
            std::copy_n(values, length, to);
        to += length;
    });
}
}  // namespace

void ELM_IndexColumn::copyOut(int32_t *to, const ELM_OffsetList &rows, int64_t first, int64_t count) const
{
    visit([&](const auto &pages) { copyValues(to, pages, rows, first, count); });
}

void ELM_IndexColumn::copyOut(int64_t *to, const ELM_OffsetList &rows, int64_t first, int64_t count) const
{
    visit([&](const auto &pages) { copyValues(to, pages, rows, first, count); });
}

void ELM_IndexColumn::resize(int64_t size)
{
    std::visit([size](auto &pages) { pages.resize(size); }, pages_);
}

void ELM_IndexColumn::set(int64_t row, int64_t value)
{
    widenFor(value);
    std::visit([&](auto &pages) { *pages.writableTuple(row) = std::remove_pointer_t<decltype(pages.writeAll())>(value); },
               pages_);
}

void ELM_IndexColumn::reset(int64_t first, int64_t count)
{
    std::visit([&](auto &pages) { pages.reset(first, count); }, pages_);
}

void ELM_IndexColumn::rearrange(const ELM_OffsetList &rows)
{
    std::visit([&](auto &pages) { pages.rearrange(rows); }, pages_);
}

void ELM_IndexColumn::reverse(int64_t first, int64_t count)
{
    std::visit([&](auto &pages) { pages.reverse(first, count); }, pages_);
}

template <class Index>
bool ELM_IndexColumn::writeChecked(int64_t first, std::span<const Index> values, int64_t low, int64_t high)
{
    if (values.empty())
        return true;
    if (!fits32(high - 1) && !isWide())
    {
        // The values may be small all the same.
        const Index largest = *std::max_element(values.begin(), values.end());
        widenFor(largest);
    }
    const bool streamed = int64_t(values.size_bytes()) >= host::kStreamedBytes;
    std::atomic<bool> good{true};
    std::visit(
        [&](auto &pages) {
            pages.writeBlocks(first, int64_t(values.size()), [&](auto *to, int64_t row, int64_t rows) {
                // A page of values is in the first cache when it is copied.
                const Index *from = values.data() + (row - first);
                if (!allWithin(from, rows, low, high))
                    good.store(false, std::memory_order_relaxed);
                copyIndices(to, from, rows, streamed);
            });
        },
        pages_);
    return good;
}

bool ELM_IndexColumn::write(int64_t first, std::span<const int32_t> values, int64_t low, int64_t high)
{
    return writeChecked(first, values, low, high);
}

bool ELM_IndexColumn::write(int64_t first, std::span<const int64_t> values, int64_t low, int64_t high)
{
    return writeChecked(first, values, low, high);
}

void ELM_IndexColumn::widenFor(int64_t value)
{
    if (isWide() || fits32(value))
        return;
    const ELM_PageArray<int32_t> &narrow = std::get<0>(pages_);
    const int64_t none = default_;
    ELM_PageArray<int64_t> wide(1, &none);
    wide.resize(narrow.size());
    int64_t *to = wide.writeAll();
    narrow.forEachRun(0, narrow.size(), [&](const int32_t *values, int64_t rows, bool repeated) {
        for (int64_t i = 0; i < rows; ++i)
            *to++ = values[repeated ? 0 : i];
    });
    pages_ = std::move(wide);
}

void ELM_IndexColumn::defragment()
{
    std::visit([](auto &pages) { pages.defragment(); }, pages_);
}

int64_t ELM_IndexColumn::memoryUsage() const
{
    return visit([](const auto &pages) { return pages.memoryUsage(); });
}

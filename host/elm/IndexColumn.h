#pragma once

#include <span>
#include <variant>

#include <host/elm/PageArray.h>

/// A column of indices: 32 bits each, until the first value arrives that needs 64.
///
/// Shape      one value a row; what a row holds when nothing was written to it is given at construction
/// Ownership  as `ELM_PageArray`: copies share, writes copy what they touch
/// Threads    reads are safe from any thread; writes need the only access to this copy
class HOST_API ELM_IndexColumn
{
public:
    explicit ELM_IndexColumn(int32_t defaultValue = -1)
        : default_(defaultValue), pages_(ELM_PageArray<int32_t>(1, &defaultValue))
    {}

    /// Call `visit` with the page array in its width: `const ELM_PageArray<int32_t> &` or `const ELM_PageArray<int64_t> &`.
    template <class Visit> decltype(auto) visit(Visit &&visit) const { return std::visit(visit, pages_); }

    int64_t size() const
    {
        return visit([](const auto &pages) { return pages.size(); });
    }
    bool isWide() const { return pages_.index() == 1; }

    /// One value.  For many, choose the width once with `visit`, `contiguous32` or `copyOut`.
    int64_t value(int64_t row) const
    {
        return visit([row](const auto &pages) { return int64_t(pages.value(row)); });
    }

    /// The rows as one block of memory; null when they are scattered or of the other width.
    const int32_t *contiguous32() const { return isWide() ? nullptr : std::get<0>(pages_).contiguous(); }
    const int64_t *contiguous64() const { return isWide() ? std::get<1>(pages_).contiguous() : nullptr; }

    /// Copy the values of the entries [first, first + count) of `rows`.  Narrowing keeps the low bits: ask `isWide` first.
    void copyOut(int32_t *to, const ELM_OffsetList &rows, int64_t first, int64_t count) const;
    void copyOut(int64_t *to, const ELM_OffsetList &rows, int64_t first, int64_t count) const;

    /// Change the number of rows; new ones hold the default.
    void resize(int64_t size);

    void set(int64_t row, int64_t value);

    /// Let rows hold the default again, let row i be what row `rows[i]` was, and turn rows of a run about.
    void reset(int64_t first, int64_t count);
    void rearrange(const ELM_OffsetList &rows);
    void reverse(int64_t first, int64_t count);

    /// Replace rows, provided that every value lies in [low, high); otherwise answer false and leave them undefined.
    /// In parallel, one pass over the values.
    bool write(int64_t first, std::span<const int32_t> values, int64_t low, int64_t high);
    bool write(int64_t first, std::span<const int64_t> values, int64_t low, int64_t high);

    /// Replace rows by the caller's code: `body(auto *values, int64_t row, int64_t rows)` runs in parallel for blocks that
    /// cover [first, first + count).  `largest` is the largest value that it will write.
    template <class Body> void writeBlocks(int64_t first, int64_t count, int64_t largest, Body &&body)
    {
        widenFor(largest);
        std::visit([&](auto &pages) { pages.writeBlocks(first, count, body); }, pages_);
    }

    /// Change rows by the caller's code: `body(auto *values)` gets all rows as one block, in which it may write values up to
    /// `largest`.  The rows keep what they hold.
    template <class Body> void modifyAll(int64_t largest, Body &&body)
    {
        widenFor(largest);
        std::visit([&](auto &pages) { body(pages.modifyAll()); }, pages_);
    }

    /// Be this column.
    template <class Index> void assign(ELM_PageArray<Index> pages) { pages_ = std::move(pages); }

    void defragment();
    int64_t memoryUsage() const;

private:
    template <class Index> bool writeChecked(int64_t first, std::span<const Index> values, int64_t low, int64_t high);
    void widenFor(int64_t value);

    int32_t default_;
    std::variant<ELM_PageArray<int32_t>, ELM_PageArray<int64_t>> pages_;
};

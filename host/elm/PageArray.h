#pragma once

#include <algorithm>
#include <atomic>
#include <vector>

#include <host/bas/Parallel.h>
#include <host/bas/TrackedAllocator.h>
#include <host/elm/OffsetList.h>
#include <host/elm/detail/PageSlab.h>

/// Read rows of a page array without looking at anything but its pages: capture once, read many times.
///
/// Ownership  none: valid while the array that it was taken from lives and is not written
/// Cost       no branch: a constant page masks the row away
template <class T> struct ELM_ReadHandle
{
    struct Page
    {
        const T *data;
        uint64_t mask;  ///< `ELM_PAGE_SIZE` - 1 for a page of rows, 0 for a page that repeats one row
    };

    const Page *pages = nullptr;
    int64_t tupleSize = 1;

    const T *tuple(int64_t row) const
    {
        const Page &page = pages[row >> ELM_PAGE_BITS];
        return page.data + int64_t(uint64_t(row) & page.mask) * tupleSize;
    }
    T value(int64_t row, int component = 0) const { return tuple(row)[component]; }
};

/// A column of rows (tuples of numbers) in pages, shared copy-on-write.
///
/// Shape      rows of `tupleSize()` interleaved values, `ELM_PAGE_SIZE` rows a page; a page that repeats one row stores
///            it once.
///            T is one of the eight numeric types.
/// Ownership  copies share everything; the first write to a copy duplicates its page table (16 bytes a page), and then only
///            the pages that it touches.  Pages are carved from slabs that grow like a vector, so columns written in order,
///            or in bulk, are one block of memory: see `contiguous`.
/// Failure    std::bad_alloc when memory is exhausted; rows are not checked
/// Threads    reads are safe from any thread; writes need the only access to this copy (other copies may be read meanwhile)
template <class T> class HOST_API ELM_PageArray
{
public:
    using Page = typename ELM_ReadHandle<T>::Page;

    /// An empty column whose new rows are zero.
    explicit ELM_PageArray(int tupleSize = 1);

    /// An empty column whose new rows are copies of `defaults`, a tuple.
    ELM_PageArray(int tupleSize, const T *defaults);

    int64_t size() const { return table_->size; }
    int tupleSize() const { return table_->tupleSize; }
    int64_t pageCount() const { return int64_t(table_->pages.size()); }
    bool isConstantPage(int64_t page) const { return table_->pages[size_t(page)].mask == 0; }

    ELM_ReadHandle<T> reader() const { return {table_->pages.data(), table_->tupleSize}; }
    const T *tuple(int64_t row) const { return reader().tuple(row); }
    T value(int64_t row, int component = 0) const { return tuple(row)[component]; }

    /// All rows as one block of `size() * tupleSize()` values; null when they are scattered, repeated, or none.
    const T *contiguous() const;

    /// Call `visit(const T *tuples, int64_t rows, bool repeated)` for the rows [first, first + count), page by page;
    /// a repeated tuple stands for all `rows` of its run.
    template <class Visit> void forEachRun(int64_t first, int64_t count, Visit &&visit) const
    {
        const int64_t end = first + count;
        for (int64_t row = first; row < end;)
        {
            const int64_t rows = std::min(end, (row | (ELM_PAGE_SIZE - 1)) + 1) - row;
            visit(tuple(row), rows, isConstantPage(row >> ELM_PAGE_BITS));
            row += rows;
        }
    }

    /// Copy the entries [first, first + count) of `rows`: `components` values of each row, `stride` values apart.
    ///
    /// Shape  components past the tuple are 0; what lies between the rows of `to` is not touched
    /// Cost   runs of rows are copied page by page, other lists gathered row by row; serial
    void copyOut(T *to, const ELM_OffsetList &rows, int64_t first, int64_t count, int components, int64_t stride) const;

    /// Change the number of rows.  New rows hold the defaults and, but for the rest of the last page, cost no memory.
    void resize(int64_t size);

    /// Let the rows [first, first + count) repeat one tuple.
    void fill(int64_t first, int64_t count, const T *tuple);

    /// Replace rows.  Large blocks are copied in parallel.
    void write(int64_t first, int64_t count, const T *values);

    /// Replace rows and keep pages of one repeated value as such: for columns of types, counts and flags.
    void writeCompact(int64_t first, int64_t count, const T *values);

    /// Replace rows by the caller's code: `body(T *tuples, int64_t row, int64_t rows)` runs, in parallel, for blocks that
    /// cover [first, first + count) and are cut at page borders.  It must set every value of its block.
    template <class Body> void writeBlocks(int64_t first, int64_t count, Body &&body)
    {
        if (count < 1)
            return;
        open(first, count, false);
        const int64_t page = first >> ELM_PAGE_BITS, pages = ((first + count - 1) >> ELM_PAGE_BITS) - page + 1;
        host::parallelForRange(pages, kPagesPerTask, [&](int64_t begin, int64_t end) {
            const int64_t last = std::min(first + count, (page + end) << ELM_PAGE_BITS);
            for (int64_t row = std::max(first, (page + begin) << ELM_PAGE_BITS); row < last;)
            {
                const int64_t rows = std::min(last, (row | (ELM_PAGE_SIZE - 1)) + 1) - row;
                body(writable(row), row, rows);
                row += rows;
            }
        });
    }

    /// One row to change, keeping what it holds.
    T *writableTuple(int64_t row)
    {
        open(row, 1, true);
        return writable(row);
    }

    /// Let the rows [first, first + count) hold the defaults again.
    void reset(int64_t first, int64_t count) { fill(first, count, defaults()); }

    /// Let row i be what row `rows[i]` was: as many rows as the list has.
    void rearrange(const ELM_OffsetList &rows);

    /// Turn the order of the rows [first, first + count) about.
    void reverse(int64_t first, int64_t count);

    /// Let the column be `rows` rows that lie packed and aligned in somebody else's memory: read there, and copied page by
    /// page when they are written.
    void adopt(const host::PageSlabHandle &memory, int64_t rows);

    /// All rows as one block to overwrite: every value must be set, as earlier ones are lost.  Null when there are no rows.
    T *writeAll();

    /// All rows as one block to change, keeping what they hold.  Null when there are no rows.
    T *modifyAll();

    /// Turn pages of equal rows into repeated ones, and give back the memory.
    void compress();

    /// Bring scattered pages into one block again when less than three quarters of them share a slab.
    void defragment();

    /// Bytes of pages (shared ones included) and of the table.
    int64_t memoryUsage() const;

    /// True when both are the same column, not only equal.
    bool shares(const ELM_PageArray &other) const { return table_ == other.table_; }

private:
    // Slab 0 holds the defaults, `tail` takes new pages, the others hold pages of older states or repeated tuples.
    template <class Item> using List = std::vector<Item, BAS_TrackedAllocator<Item, BAS_MEMORY_HOST_TABLE>>;
    struct Table : BAS_IntrusiveRefCounter<Table>
    {
        List<Page> pages;
        List<uint32_t> slabOf;  // page -> slab that holds it
        List<host::PageSlabHandle> slabs;
        uint32_t tail = 0;  // 0: none yet
        int64_t size = 0;
        int tupleSize = 1;
        mutable std::atomic<int8_t> contiguity{-1};  // -1 not known yet, 0 no, 1 yes

        Table() = default;
        Table(const Table &other);
    };

    // A page is copied in about a microsecond.
    static constexpr int64_t kPagesPerTask = 32;

    T *writable(int64_t row) { return const_cast<T *>(tuple(row)); }
    int64_t rowsOf(int64_t page) const { return std::min(ELM_PAGE_SIZE, size() - (page << ELM_PAGE_BITS)); }
    size_t bytesOf(int64_t rows) const { return size_t(rows) * size_t(tupleSize()) * sizeof(T); }
    const T *defaults() const { return reinterpret_cast<const T *>(table_->slabs[0]->data()); }

    // The table to change.  Pages of slabs that other tables share are not to be written.
    Table &own();
    bool ownsRaw(int64_t page) const;

    // Make the pages of these rows ours and raw; values outside the rows are kept, those inside when `keep`.
    void open(int64_t first, int64_t count, bool keep);
    void extendLastPage(int64_t rows);
    void expandPage(T *to, int64_t page, int64_t rows) const;
    T *reserveTail(int64_t rows);
    void growTail(size_t bytes);
    void trimTail();

    // Lay the pages out in one new slab, in order; repeated pages too when `expand`, and without values unless `keep`.
    void repack(bool expand, bool keep);
    uint32_t addSlab(host::PageSlabHandle slab);
    uint32_t constantSlab(int64_t page, const T *tuple);

    BAS_IntrusivePtr<Table> table_;
};

extern template class ELM_PageArray<uint8_t>;
extern template class ELM_PageArray<int8_t>;
extern template class ELM_PageArray<int16_t>;
extern template class ELM_PageArray<int32_t>;
extern template class ELM_PageArray<int64_t>;
extern template class ELM_PageArray<PLT_Half>;
extern template class ELM_PageArray<float>;
extern template class ELM_PageArray<double>;

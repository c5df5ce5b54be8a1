#include <host/elm/PageArray.h>

#include <host/bas/stream.h>
#include <host/elm/detail/pages.h>

template <class T> void ELM_PageArray<T>::open(int64_t first, int64_t count, bool keep)
{
    if (!keep && count == size())
    {
        // Nothing stays: start afresh rather than beside what is lost.
        writeAll();
        return;
    }
    Table &table = own();
    const int64_t begin = first >> ELM_PAGE_BITS, end = host::pagesFor(first + count);
    int64_t rows = 0;
    for (int64_t page = begin; page < end; ++page)
        rows += ownsRaw(page) ? 0 : rowsOf(page);
    if (rows == 0)
        return;
    T *to = reserveTail(rows);
    for (int64_t page = begin; page < end; ++page)
    {
        if (ownsRaw(page))
            continue;
        const int64_t row = page << ELM_PAGE_BITS, held = rowsOf(page);
        if (keep || row < first || row + held > first + count)
            expandPage(to, page, held);
        table.pages[size_t(page)] = {to, host::kRawPage};
        table.slabOf[size_t(page)] = table.tail;
        to += held * tupleSize();
    }
}

// A slab that holds one tuple: the defaults', the one that the page before repeats, or a new one.
template <class T> uint32_t ELM_PageArray<T>::constantSlab(int64_t page, const T *tuple)
{
    if (host::sameValues(tuple, defaults(), tupleSize()))
        return 0;
    if (page > 0 && isConstantPage(page - 1) && host::sameValues(tuple, table_->pages[size_t(page - 1)].data, tupleSize()))
        return table_->slabOf[size_t(page - 1)];
    host::PageSlabHandle slab(new host::PageSlab(bytesOf(1)));
    std::memcpy(slab->data(), tuple, bytesOf(1));
    return addSlab(std::move(slab));
}

template <class T> void ELM_PageArray<T>::fill(int64_t first, int64_t count, const T *tuple)
{
    if (count < 1)
        return;
    Table &table = own();
    const int64_t end = first + count;
    for (int64_t row = first; row < end;)
    {
        const int64_t page = row >> ELM_PAGE_BITS, pageEnd = std::min(size(), (page + 1) << ELM_PAGE_BITS);
        const int64_t rows = std::min(end, pageEnd) - row;
        const bool repeats = isConstantPage(page) && host::sameValues(tuple, table.pages[size_t(page)].data, tupleSize());
        if (rows == rowsOf(page) && !repeats)
        {
            const uint32_t slab = constantSlab(page, tuple);
            table.slabOf[size_t(page)] = slab;
            table.pages[size_t(page)] = {reinterpret_cast<const T *>(table.slabs[slab]->data()), 0};
        }
        else if (!repeats)
        {
            open(row, rows, true);
            host::repeat(writable(row), tuple, rows, tupleSize());
        }
        row += rows;
    }
}

template <class T> void ELM_PageArray<T>::write(int64_t first, int64_t count, const T *values)
{
    const bool streamed = int64_t(bytesOf(count)) >= host::kStreamedBytes;
    writeBlocks(first, count, [&](T *to, int64_t row, int64_t rows) {
        host::copyBytes(to, values + (row - first) * tupleSize(), bytesOf(rows), streamed);
    });
}

template <class T> void ELM_PageArray<T>::writeCompact(int64_t first, int64_t count, const T *values)
{
    const int64_t end = first + count, tupleSize = this->tupleSize();
    const auto valuesOf = [&](int64_t row) { return values + (row - first) * tupleSize; };
    int64_t written = first;
    for (int64_t row = first; row < end;)
    {
        const int64_t page = row >> ELM_PAGE_BITS;
        const int64_t rows = std::min(end, (page + 1) << ELM_PAGE_BITS) - row;
        if (rows == rowsOf(page) && host::sameRows(valuesOf(row), rows, tupleSize))
        {
            write(written, row - written, valuesOf(written));
            fill(row, rows, valuesOf(row));
            written = row + rows;
        }
        row += rows;
    }
    write(written, end - written, valuesOf(written));
}

#define INSTANTIATE(T)                                                                                                      \
    template void ELM_PageArray<T>::open(int64_t, int64_t, bool);                                                           \
    template void ELM_PageArray<T>::fill(int64_t, int64_t, const T *);                                                      \
    template void ELM_PageArray<T>::write(int64_t, int64_t, const T *);                                                     \
    template void ELM_PageArray<T>::writeCompact(int64_t, int64_t, const T *);                                              \
    template uint32_t ELM_PageArray<T>::constantSlab(int64_t, const T *);
ELM_EACH_PAGE_TYPE(INSTANTIATE)

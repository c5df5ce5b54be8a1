#include <host/elm/PageArray.h>

#include <cstring>
#include <new>

#include <host/bas/stream.h>

namespace
{
constexpr uint64_t kRaw = uint64_t(ELM_PAGE_SIZE - 1);

int64_t pagesFor(int64_t rows) { return (rows + ELM_PAGE_SIZE - 1) >> ELM_PAGE_BITS; }

// Room for `count` items, growing in steps, so that what follows cannot fail.
template <class Items> void reserveFor(Items &items, int64_t count)
{
    if (size_t(count) > items.capacity())
        items.reserve(std::max(size_t(count), items.capacity() * 2));
}

template <class T> void repeat(T *to, const T *tuple, int64_t rows, int64_t tupleSize)
{
    if (tupleSize == 1)
        std::fill_n(to, rows, *tuple);
    else
        for (int64_t row = 0; row < rows; ++row)
            std::copy_n(tuple, tupleSize, to + row * tupleSize);
}

// Equal bits: the two zeros differ, and a NaN is itself.
template <class T> bool sameValues(const T *a, const T *b, int64_t count)
{
    return std::memcmp(static_cast<const void *>(a), b, size_t(count) * sizeof(T)) == 0;
}

// True when each of the rows is a copy of the first: the block equals itself one row on.
template <class T> bool sameRows(const T *tuples, int64_t rows, int64_t tupleSize)
{
    return sameValues(tuples, tuples + tupleSize, (rows - 1) * tupleSize);
}
}  // namespace

template <class T>
ELM_PageArray<T>::Table::Table(const Table &other)
    : BAS_IntrusiveRefCounter<Table>(), pages(other.pages), slabOf(other.slabOf), slabs(other.slabs), tail(other.tail),
      size(other.size), tupleSize(other.tupleSize)
{}

template <class T> ELM_PageArray<T>::ELM_PageArray(int tupleSize) : table_(new Table)
{
    table_->tupleSize = tupleSize;
    table_->slabs.emplace_back(new host::PageSlab(bytesOf(1)));
    std::memset(table_->slabs[0]->data(), 0, bytesOf(1));
}

template <class T> ELM_PageArray<T>::ELM_PageArray(int tupleSize, const T *defaults) : ELM_PageArray(tupleSize)
{
    std::memcpy(table_->slabs[0]->data(), defaults, bytesOf(1));
}

template <class T> const T *ELM_PageArray<T>::contiguous() const
{
    const Table &table = *table_;
    if (table.size == 0)
        return nullptr;
    const T *base = table.pages[0].data;
    int8_t known = table.contiguity.load(std::memory_order_relaxed);
    if (known < 0)
    {
        known = 1;
        for (int64_t page = 0; page < pageCount() && known && table.size > 1; ++page)
        {
            const Page &at = table.pages[size_t(page)];
            known = at.mask == kRaw && at.data == base + (page << ELM_PAGE_BITS) * table.tupleSize;
        }
        table.contiguity.store(known, std::memory_order_relaxed);
    }
    return known ? base : nullptr;
}

template <class T> void ELM_PageArray<T>::resize(int64_t size)
{
    if (size == this->size())
        return;
    Table &table = own();
    const int64_t pages = pagesFor(size);
    if (size > table.size)
    {
        reserveFor(table.pages, pages);
        reserveFor(table.slabOf, pages);
        const int64_t inLast = table.size & (ELM_PAGE_SIZE - 1);
        if (inLast)
            extendLastPage(std::min(ELM_PAGE_SIZE, inLast + size - table.size));
    }
    table.pages.resize(size_t(pages), Page{defaults(), 0});
    table.slabOf.resize(size_t(pages), 0);
    const bool shrinks = size < table.size;
    table.size = size;
    if (shrinks)
        trimTail();
}

// Give the unused end of the tail back, so that rows which come again continue the block.
template <class T> void ELM_PageArray<T>::trimTail()
{
    if (table_->tail == 0 || table_->slabs[table_->tail]->use_count() > 1)
        return;
    host::PageSlab &tail = *table_->slabs[table_->tail];
    tail.used = 0;
    for (int64_t page = 0; page < pageCount(); ++page)
        if (table_->slabOf[size_t(page)] == table_->tail)
        {
            const int64_t rows = isConstantPage(page) ? 1 : rowsOf(page);
            const char *end = reinterpret_cast<const char *>(table_->pages[size_t(page)].data) + bytesOf(rows);
            tail.used = std::max(tail.used, size_t(end - tail.data()));
        }
}

// Let the last page hold `rows` rows, the new ones defaults.  The table's size is still the old one.
template <class T> void ELM_PageArray<T>::extendLastPage(int64_t rows)
{
    const int64_t last = pageCount() - 1;
    const int64_t held = rowsOf(last);
    if (isConstantPage(last) && sameValues(table_->pages[size_t(last)].data, defaults(), tupleSize()))
        return;
    const auto endsTail = [&] {
        const host::PageSlab &slab = *table_->slabs[table_->slabOf[size_t(last)]];
        const char *end = reinterpret_cast<const char *>(table_->pages[size_t(last)].data) + bytesOf(held);
        return table_->slabOf[size_t(last)] == table_->tail && end == slab.data() + slab.used;
    };
    if (ownsRaw(last) && endsTail())
        reserveTail(rows - held);
    else
    {
        T *to = reserveTail(rows);
        expandPage(to, last, held);
        table_->pages[size_t(last)] = {to, kRaw};
        table_->slabOf[size_t(last)] = table_->tail;
    }
    T *first = const_cast<T *>(table_->pages[size_t(last)].data) + held * tupleSize();
    repeat(first, defaults(), rows - held, tupleSize());
}

template <class T> void ELM_PageArray<T>::expandPage(T *to, int64_t page, int64_t rows) const
{
    const T *from = table_->pages[size_t(page)].data;
    if (isConstantPage(page))
        repeat(to, from, rows, tupleSize());
    else
        std::memcpy(static_cast<void *>(to), from, bytesOf(rows));
}

template <class T> typename ELM_PageArray<T>::Table &ELM_PageArray<T>::own()
{
    if (table_->use_count() > 1)
        table_ = new Table(*table_);
    table_->contiguity.store(-1, std::memory_order_relaxed);
    return *table_;
}

template <class T> bool ELM_PageArray<T>::ownsRaw(int64_t page) const
{
    const host::PageSlab &slab = *table_->slabs[table_->slabOf[size_t(page)]];
    return !isConstantPage(page) && slab.use_count() == 1 && !slab.isForeign();
}

template <class T> void ELM_PageArray<T>::open(int64_t first, int64_t count, bool keep)
{
    if (!keep && count == size())
    {
        // Nothing stays: start afresh rather than beside what is lost.
        writeAll();
        return;
    }
    Table &table = own();
    const int64_t begin = first >> ELM_PAGE_BITS, end = pagesFor(first + count);
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
        table.pages[size_t(page)] = {to, kRaw};
        table.slabOf[size_t(page)] = table.tail;
        to += held * tupleSize();
    }
}

// Room for rows at the end of a slab that is ours alone; it grows like a vector.
template <class T> T *ELM_PageArray<T>::reserveTail(int64_t rows)
{
    const size_t bytes = bytesOf(rows);
    Table &table = *table_;
    if (table.tail == 0 || table.slabs[table.tail]->use_count() > 1)
        table.tail = addSlab(new host::PageSlab(bytes));
    else if (table.slabs[table.tail]->used + bytes > table.slabs[table.tail]->capacity())
        growTail(bytes);
    host::PageSlab &tail = *table.slabs[table.tail];
    T *at = reinterpret_cast<T *>(tail.data() + tail.used);
    tail.used += bytes;
    return at;
}

template <class T> void ELM_PageArray<T>::growTail(size_t bytes)
{
    Table &table = *table_;
    const host::PageSlabHandle old = table.slabs[table.tail];
    host::PageSlabHandle grown(new host::PageSlab(std::max(old->used + bytes, old->capacity() + old->capacity() / 2)));
    std::memcpy(grown->data(), old->data(), old->used);
    grown->used = old->used;
    for (size_t page = 0; page < table.pages.size(); ++page)
        if (table.slabOf[page] == table.tail)
        {
            const char *from = reinterpret_cast<const char *>(table.pages[page].data);
            table.pages[page].data = reinterpret_cast<const T *>(grown->data() + (from - old->data()));
        }
    table.slabs[table.tail] = std::move(grown);
}

template <class T> uint32_t ELM_PageArray<T>::addSlab(host::PageSlabHandle slab)
{
    table_->slabs.push_back(std::move(slab));
    return uint32_t(table_->slabs.size() - 1);
}

// A slab that holds one tuple: the defaults', the one that the page before repeats, or a new one.
template <class T> uint32_t ELM_PageArray<T>::constantSlab(int64_t page, const T *tuple)
{
    if (sameValues(tuple, defaults(), tupleSize()))
        return 0;
    if (page > 0 && isConstantPage(page - 1) && sameValues(tuple, table_->pages[size_t(page - 1)].data, tupleSize()))
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
        const bool repeats = isConstantPage(page) && sameValues(tuple, table.pages[size_t(page)].data, tupleSize());
        if (rows == rowsOf(page) && !repeats)
        {
            const uint32_t slab = constantSlab(page, tuple);
            table.slabOf[size_t(page)] = slab;
            table.pages[size_t(page)] = {reinterpret_cast<const T *>(table.slabs[slab]->data()), 0};
        }
        else if (!repeats)
        {
            open(row, rows, true);
            repeat(writable(row), tuple, rows, tupleSize());
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
        if (rows == rowsOf(page) && sameRows(valuesOf(row), rows, tupleSize))
        {
            write(written, row - written, valuesOf(written));
            fill(row, rows, valuesOf(row));
            written = row + rows;
        }
        row += rows;
    }
    write(written, end - written, valuesOf(written));
}

template <class T> T *ELM_PageArray<T>::writeAll()
{
    if (size() == 0)
        return nullptr;
    own();
    if (!contiguous() || !ownsRaw(0))
        repack(true, false);
    return writable(0);
}

template <class T> T *ELM_PageArray<T>::modifyAll()
{
    if (size() == 0)
        return nullptr;
    own();
    if (!contiguous() || !ownsRaw(0))
        repack(true, true);
    return writable(0);
}

template <class T> void ELM_PageArray<T>::repack(bool expand, bool keep)
{
    int64_t rows = 0;
    for (int64_t page = 0; page < pageCount(); ++page)
        rows += expand || !isConstantPage(page) ? rowsOf(page) : 0;

    ELM_PageArray packed(*this);
    Table &table = packed.own();
    table.slabs.resize(1);
    table.tail = 0;
    T *to = rows > 0 ? packed.reserveTail(rows) : nullptr;
    for (int64_t page = 0; page < pageCount(); ++page)
    {
        Page &at = table.pages[size_t(page)];
        if (expand || !isConstantPage(page))
        {
            at = {to, kRaw};
            table.slabOf[size_t(page)] = table.tail;
            to += rowsOf(page) * tupleSize();
        }
        else
        {
            table.slabOf[size_t(page)] = packed.constantSlab(page, at.data);
            at.data = reinterpret_cast<const T *>(table.slabs[table.slabOf[size_t(page)]]->data());
        }
    }
    if (keep)
        host::parallelFor(pageCount(), kPagesPerTask, [&](int64_t page) {
            if (!packed.isConstantPage(page))
                expandPage(const_cast<T *>(table.pages[size_t(page)].data), page, rowsOf(page));
        });
    table_ = std::move(packed.table_);
}

template <class T> void ELM_PageArray<T>::compress()
{
    bool found = false;
    for (int64_t page = 0; page < pageCount(); ++page)
        if (!isConstantPage(page) && sameRows(table_->pages[size_t(page)].data, rowsOf(page), tupleSize()))
        {
            own().pages[size_t(page)].mask = 0;
            found = true;
        }
    if (found)
        repack(false, true);
}

template <class T> void ELM_PageArray<T>::defragment()
{
    std::vector<int64_t> pagesIn(table_->slabs.size());
    int64_t raw = 0;
    for (int64_t page = 0; page < pageCount(); ++page)
        if (!isConstantPage(page))
        {
            ++raw;
            ++pagesIn[table_->slabOf[size_t(page)]];
        }
    if (*std::max_element(pagesIn.begin(), pagesIn.end()) * 4 < raw * 3)
        repack(false, true);
}

template <class T> int64_t ELM_PageArray<T>::memoryUsage() const
{
    int64_t bytes = int64_t(sizeof(Table) + table_->pages.capacity() * sizeof(Page));
    bytes += int64_t(table_->slabOf.capacity() * sizeof(uint32_t));
    for (const host::PageSlabHandle &slab : table_->slabs)
        bytes += int64_t(sizeof(host::PageSlab) + slab->capacity());
    return bytes;
}

template class ELM_PageArray<uint8_t>;
template class ELM_PageArray<int8_t>;
template class ELM_PageArray<int16_t>;
template class ELM_PageArray<int32_t>;
template class ELM_PageArray<int64_t>;
template class ELM_PageArray<PLT_Half>;
template class ELM_PageArray<float>;
template class ELM_PageArray<double>;

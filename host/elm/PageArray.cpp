#include <host/elm/PageArray.h>

#include <cstring>
#include <new>

#include <host/elm/detail/pages.h>

namespace
{
// Room for `count` items, growing in steps, so that what follows cannot fail.
template <class Items> void reserveFor(Items &items, int64_t count)
{
    if (size_t(count) > items.capacity())
        items.reserve(std::max(size_t(count), items.capacity() * 2));
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

template <class T> void ELM_PageArray<T>::resize(int64_t size)
{
    if (size == this->size())
        return;
    Table &table = own();
    const int64_t pages = host::pagesFor(size);
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
    if (isConstantPage(last) && host::sameValues(table_->pages[size_t(last)].data, defaults(), tupleSize()))
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
        table_->pages[size_t(last)] = {to, host::kRawPage};
        table_->slabOf[size_t(last)] = table_->tail;
    }
    T *first = const_cast<T *>(table_->pages[size_t(last)].data) + held * tupleSize();
    host::repeat(first, defaults(), rows - held, tupleSize());
}

template <class T> void ELM_PageArray<T>::expandPage(T *to, int64_t page, int64_t rows) const
{
    const T *from = table_->pages[size_t(page)].data;
    if (isConstantPage(page))
        host::repeat(to, from, rows, tupleSize());
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

template <class T> int64_t ELM_PageArray<T>::memoryUsage() const
{
    int64_t bytes = int64_t(sizeof(Table) + table_->pages.capacity() * sizeof(Page));
    bytes += int64_t(table_->slabOf.capacity() * sizeof(uint32_t));
    for (const host::PageSlabHandle &slab : table_->slabs)
        bytes += int64_t(sizeof(host::PageSlab) + slab->capacity());
    return bytes;
}

#define INSTANTIATE(T) template class ELM_PageArray<T>;
ELM_EACH_PAGE_TYPE(INSTANTIATE)

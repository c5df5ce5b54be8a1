#include <host/elm/PageArray.h>

#include <host/elm/detail/pages.h>

// How pages lie in memory: one block, repeated rows, scattered slabs.

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
            known = at.mask == host::kRawPage && at.data == base + (page << ELM_PAGE_BITS) * table.tupleSize;
        }
        table.contiguity.store(known, std::memory_order_relaxed);
    }
    return known ? base : nullptr;
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
            at = {to, host::kRawPage};
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
        if (!isConstantPage(page) && host::sameRows(table_->pages[size_t(page)].data, rowsOf(page), tupleSize()))
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

#define INSTANTIATE(T)                                                                                                      \
    template const T *ELM_PageArray<T>::contiguous() const;                                                                 \
    template T *ELM_PageArray<T>::writeAll();                                                                               \
    template T *ELM_PageArray<T>::modifyAll();                                                                              \
    template void ELM_PageArray<T>::repack(bool, bool);                                                                     \
    template void ELM_PageArray<T>::compress();                                                                             \
    template void ELM_PageArray<T>::defragment();
ELM_EACH_PAGE_TYPE(INSTANTIATE)

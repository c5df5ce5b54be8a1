#include <host/elm/PageArray.h>

#include <host/elm/detail/pages.h>

template <class T> void ELM_PageArray<T>::rearrange(const ELM_OffsetList &rows)
{
    ELM_PageArray gathered(tupleSize(), defaults());
    gathered.resize(rows.size());
    gathered.writeBlocks(
        0, rows.size(), [&](T *to, int64_t row, int64_t count) { copyOut(to, rows, row, count, tupleSize(), tupleSize()); });
    bool repeats = false;
    for (int64_t page = 0; page < pageCount() && !repeats; ++page)
        repeats = isConstantPage(page);
    if (repeats)
        gathered.compress();
    table_ = std::move(gathered.table_);
}

template <class T> void ELM_PageArray<T>::reverse(int64_t first, int64_t count)
{
    if (count < 2)
        return;
    open(first, count, true);
    for (int64_t low = first, high = first + count - 1; low < high; ++low, --high)
        std::swap_ranges(writable(low), writable(low) + tupleSize(), writable(high));
}

template <class T> void ELM_PageArray<T>::adopt(const host::PageSlabHandle &memory, int64_t rows)
{
    ELM_PageArray adopted(tupleSize(), defaults());
    adopted.resize(rows);
    const uint32_t slab = adopted.addSlab(memory);
    const T *values = reinterpret_cast<const T *>(memory->data());
    for (int64_t page = 0; page < adopted.pageCount(); ++page)
    {
        adopted.table_->pages[size_t(page)] = {values + (page << ELM_PAGE_BITS) * tupleSize(), host::kRawPage};
        adopted.table_->slabOf[size_t(page)] = slab;
    }
    table_ = std::move(adopted.table_);
}

#define INSTANTIATE(T)                                                                                                      \
    template void ELM_PageArray<T>::rearrange(const ELM_OffsetList &);                                                      \
    template void ELM_PageArray<T>::reverse(int64_t, int64_t);                                                              \
    template void ELM_PageArray<T>::adopt(const host::PageSlabHandle &, int64_t);
ELM_EACH_PAGE_TYPE(INSTANTIATE)

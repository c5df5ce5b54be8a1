#pragma once

#include <variant>

#include <host/elm/PageArray.h>

/// The numbers of an attribute: a page array in one of the eight numeric storages.
///
/// Ownership, Threads  as `ELM_PageArray`
class HOST_API ELM_NumericTuple
{
public:
    /// `size` rows of zeros.  The storage must be numeric and the tuple size at least 1.
    ELM_NumericTuple(ELM_Storage storage, int tupleSize, int64_t size);

    ELM_Storage storage() const { return ELM_Storage(pages_.index()); }
    int tupleSize() const;
    int64_t size() const;

    /// The pages as values of type T; null when the storage is another.
    template <class T> const ELM_PageArray<T> *pages() const { return std::get_if<ELM_PageArray<T>>(&pages_); }
    template <class T> ELM_PageArray<T> *pages() { return std::get_if<ELM_PageArray<T>>(&pages_); }

    /// Call `visit` with the page array in its own type: dispatch once per attribute, then loop.
    template <class Visit> decltype(auto) visit(Visit &&visit) const { return std::visit(visit, pages_); }
    template <class Visit> decltype(auto) visit(Visit &&visit) { return std::visit(visit, pages_); }

    void resize(int64_t size);

    // As the operations of `ELM_PageArray`.
    void reset(int64_t first, int64_t count);
    void rearrange(const ELM_OffsetList &rows);
    void reverse(int64_t first, int64_t count);
    void defragment();
    int64_t memoryUsage() const;

    /// All values as one block of memory; null when the pages are scattered or repeated.
    const void *contiguousData() const;

private:
    // In the order of the storages, so that the index is the storage.
    std::variant<ELM_PageArray<uint8_t>, ELM_PageArray<int8_t>, ELM_PageArray<int16_t>, ELM_PageArray<int32_t>,
                 ELM_PageArray<int64_t>, ELM_PageArray<PLT_Half>, ELM_PageArray<float>, ELM_PageArray<double>>
        pages_;
};

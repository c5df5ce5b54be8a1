#pragma once

#include <functional>

#include <host/bas/Intrusive.h>
#include <host/plt/types.h>

namespace host
{
/// A counted block of memory that pages are carved from.
///
/// The count is the number of page tables that use the slab: a table that finds it at 1 may write, unless the memory is
/// somebody else's.
class HOST_API PageSlab : public BAS_IntrusiveRefCounter<PageSlab>
{
public:
    /// Throws std::bad_alloc when memory is exhausted.
    explicit PageSlab(size_t capacity);

    /// Memory that stays its owner's and is never written.  `release` (may be empty) runs when no page table uses it.
    PageSlab(const void *memory, std::function<void()> release);

    ~PageSlab();
    PageSlab(const PageSlab &) = delete;
    PageSlab &operator=(const PageSlab &) = delete;

    char *data() const { return data_; }

    /// Bytes that the slab allocated: none of somebody else's.
    size_t capacity() const { return capacity_; }
    bool isForeign() const { return capacity_ == 0; }

    /// Bytes from the start that pages occupy.
    size_t used = 0;

private:
    char *data_;
    size_t capacity_;
    std::function<void()> release_;
};

using PageSlabHandle = BAS_IntrusivePtr<PageSlab>;
}  // namespace host

#pragma once

#include <host/bas/Intrusive.h>
#include <host/plt/types.h>

namespace host
{
/// A counted block of memory that pages are carved from.
///
/// The count is the number of page tables that use the slab: a table that finds it at 1 may write.
class HOST_API PageSlab : public BAS_IntrusiveRefCounter<PageSlab>
{
public:
    /// Throws std::bad_alloc when memory is exhausted.
    explicit PageSlab(size_t capacity);
    ~PageSlab();
    PageSlab(const PageSlab &) = delete;
    PageSlab &operator=(const PageSlab &) = delete;

    char *data() const { return data_; }
    size_t capacity() const { return capacity_; }

    /// Bytes from the start that pages occupy.
    size_t used = 0;

private:
    char *data_;
    size_t capacity_;
};

using PageSlabHandle = BAS_IntrusivePtr<PageSlab>;
}  // namespace host

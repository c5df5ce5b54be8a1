#include <host/elm/detail/PageSlab.h>

#include <new>

#include <host/bas/LargeBlocks.h>
#include <host/bas/MemoryTracker.h>

host::PageSlab::PageSlab(size_t capacity)
    : data_(static_cast<char *>(BAS_LargeBlocks::allocate(capacity))), capacity_(capacity)
{
    if (!data_)
        throw std::bad_alloc();
    BAS_MemoryTracker::add(BAS_MEMORY_HOST_PAGE, int64_t(capacity));
}

host::PageSlab::PageSlab(const void *memory, std::function<void()> release)
    : data_(static_cast<char *>(const_cast<void *>(memory))), capacity_(0), release_(std::move(release))
{}

host::PageSlab::~PageSlab()
{
    if (isForeign())
    {
        if (release_)
            release_();
        return;
    }
    BAS_LargeBlocks::release(data_, capacity_);
    BAS_MemoryTracker::add(BAS_MEMORY_HOST_PAGE, -int64_t(capacity_));
}

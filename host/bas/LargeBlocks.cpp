#include <host/bas/LargeBlocks.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cstdlib>
#include <mutex>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

#include <host/bas/MemoryTracker.h>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(address, size) (void(address), void(size))
#define ASAN_UNPOISON_MEMORY_REGION(address, size) (void(address), void(size))
#endif

namespace
{
constexpr size_t kCacheLine = 64;
constexpr size_t kPage = 4096;
constexpr size_t kSmallestPooled = size_t(64) << 10;
constexpr size_t kHugePage = size_t(2) << 20;

// Up to 2 MiB a class is twice the one before.  From there on doubling would waste address space for nothing: eight classes
// to a doubling, and what lies behind the asked size is never touched.
constexpr int kDoublingClasses = 6;
constexpr int kStepsPerDoubling = 8;
constexpr int kHugePageLog = 21;
constexpr int kLargestPooledLog = 31;
constexpr int kClasses = kDoublingClasses + kStepsPerDoubling * (kLargestPooledLog - kHugePageLog);
constexpr int kUnpooled = -1;

struct SizeClass
{
    int index;
    size_t bytes;  // of every block of the class
};

SizeClass classOf(size_t bytes)
{
    if (bytes < kHugePage)
    {
        const size_t rounded = std::max(std::bit_ceil(bytes), kSmallestPooled);
        return {int(std::bit_width(rounded) - std::bit_width(kSmallestPooled)), rounded};
    }
    const int log = int(std::bit_width(bytes)) - 1;
    const size_t step = size_t(1) << (log - 3);
    const size_t steps = (bytes - 1) / step + 1;  // 8 to 16
    const int index = kDoublingClasses + (log - kHugePageLog) * kStepsPerDoubling + int(steps) - kStepsPerDoubling;
    return {index < kClasses ? index : kUnpooled, steps * step};
}

// The first touch of 64 MiB takes 6 ms in huge pages and 40 ms in small ones; asking for all of them at once or touching
// them from two threads takes as long, since clearing them is what costs.  On a virtual machine whose host takes free memory
// back it can be thirty times as much, whatever is asked for: one more reason to keep blocks.
void *mapHuge(size_t bytes)
{
    const size_t room = bytes + kHugePage;
    void *mapped = mmap(nullptr, room, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED)
        return nullptr;
    char *const start = static_cast<char *>(mapped);
    char *const block = start + (-reinterpret_cast<uintptr_t>(start) & (kHugePage - 1));
    if (block > start)
        munmap(start, size_t(block - start));
    munmap(block + bytes, size_t(start + room - (block + bytes)));
    madvise(block, bytes, MADV_HUGEPAGE);
    return block;
}

void *fromSystem(size_t bytes) { return bytes < kHugePage ? std::aligned_alloc(kPage, bytes) : mapHuge(bytes); }

void toSystem(void *block, size_t bytes)
{
    ASAN_UNPOISON_MEMORY_REGION(block, bytes);
    if (bytes < kHugePage)
        std::free(block);
    else
        munmap(block, bytes);
}

/// The blocks that wait to be used again.
class Pool
{
public:
    void *take(SizeClass size)
    {
        Shelf &shelf = shelves_[size_t(size.index)];
        const std::lock_guard lock(shelf.mutex);
        if (shelf.blocks.empty())
            return nullptr;
        void *const block = shelf.blocks.back();
        shelf.blocks.pop_back();
        count(-int64_t(size.bytes));
        return block;
    }

    // The newest block is the warmest, so older ones make room for it.  Without memory for lists of blocks nothing is kept:
    // memory is given back from where nothing may be thrown.
    bool keep(void *block, SizeClass size)
    try
    {
        if (size.bytes > bound_ / 2)
            return false;
        if (waiting() + size.bytes > bound_)
            trim(bound_ - size.bytes);
        ASAN_POISON_MEMORY_REGION(block, size.bytes);
        Shelf &shelf = shelves_[size_t(size.index)];
        const std::lock_guard lock(shelf.mutex);
        shelf.bytes = size.bytes;
        shelf.blocks.push_back(block);
        count(int64_t(size.bytes));
        return true;
    }
    catch (const std::bad_alloc &)
    {
        return false;
    }

    // Large blocks first: they are the fewest calls for the most memory.
    void trim(size_t keepBytes)
    {
        for (size_t i = shelves_.size(); i-- > 0 && waiting() > keepBytes;)
            dropOldest(shelves_[i], keepBytes);
    }

    size_t waiting() const { return waiting_.load(std::memory_order_relaxed); }

private:
    struct alignas(kCacheLine) Shelf
    {
        std::mutex mutex;
        std::vector<void *> blocks;
        size_t bytes = 0;
    };

    void dropOldest(Shelf &shelf, size_t keepBytes)
    {
        std::vector<void *> dropped;
        {
            const std::lock_guard lock(shelf.mutex);
            const size_t now = waiting();
            if (now <= keepBytes || shelf.blocks.empty())
                return;
            const size_t wanted = (now - keepBytes - 1) / shelf.bytes + 1;
            const auto end = shelf.blocks.begin() + ptrdiff_t(std::min(wanted, shelf.blocks.size()));
            dropped.assign(shelf.blocks.begin(), end);
            shelf.blocks.erase(shelf.blocks.begin(), end);
            count(-int64_t(shelf.bytes * dropped.size()));
        }
        for (void *block : dropped)
            toSystem(block, shelf.bytes);
    }

    void count(int64_t bytes)
    {
        waiting_.fetch_add(size_t(bytes), std::memory_order_relaxed);
        BAS_MemoryTracker::add(BAS_MEMORY_POOL, bytes);
    }

    // A sixteenth of the machine's memory, at most 1 GiB: enough for the buffers of one frame of a large scene.
    static size_t defaultBound()
    {
        const long pages = sysconf(_SC_PHYS_PAGES);
        const size_t memory = pages > 0 ? size_t(pages) * kPage : 0;
        return std::clamp(memory / 16, size_t(64) << 20, size_t(1) << 30);
    }

    std::array<Shelf, size_t(kClasses)> shelves_;
    std::atomic<size_t> waiting_{0};
    const size_t bound_ = defaultBound();
};

// Never destroyed: objects with static storage give their blocks back after any destructor of ours.
Pool &pool()
{
    static Pool &instance = *new Pool;
    return instance;
}
}  // namespace

void *BAS_LargeBlocks::allocate(size_t bytes)
{
    if (bytes < kSmallestPooled)
        return std::aligned_alloc(kCacheLine, (std::max<size_t>(bytes, 1) + kCacheLine - 1) & ~(kCacheLine - 1));
    if (bytes > size_t(PTRDIFF_MAX) / 2)
        return nullptr;
    const SizeClass size = classOf(bytes);
    void *block = size.index == kUnpooled ? nullptr : pool().take(size);
    if (!block)
        block = fromSystem(size.bytes);
    if (!block)
    {
        // What waits in the pool may be just what is missing.
        trim(0);
        block = fromSystem(size.bytes);
    }
    if (block)
    {
        ASAN_UNPOISON_MEMORY_REGION(block, bytes);
        ASAN_POISON_MEMORY_REGION(static_cast<char *>(block) + bytes, size.bytes - bytes);
    }
    return block;
}

void BAS_LargeBlocks::release(void *block, size_t bytes)
{
    if (!block)
        return;
    if (bytes < kSmallestPooled)
        return std::free(block);
    const SizeClass size = classOf(bytes);
    if (size.index == kUnpooled || !pool().keep(block, size))
        toSystem(block, size.bytes);
}

void BAS_LargeBlocks::trim(size_t keepBytes) { pool().trim(keepBytes); }

size_t BAS_LargeBlocks::pooled() { return pool().waiting(); }

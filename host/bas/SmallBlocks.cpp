#include <host/bas/SmallBlocks.h>

#include <algorithm>
#include <cstdint>
#include <mutex>
#include <new>

#include <boost/intrusive/list.hpp>

#include <host/bas/LargeBlocks.h>
#include <host/bas/MemoryTracker.h>

namespace
{
constexpr size_t kBlock = BAS_SmallBlocks::kBytes;

// The address sanitizer watches over the blocks of the global heap only.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kIsPooled = false;
#else
constexpr bool kIsPooled = true;
#endif

// Large blocks of this size are aligned to it: the address of a block tells its slab.  And they are huge pages.
constexpr size_t kSlab = size_t(2) << 20;
constexpr int kSlabBlocks = int(kSlab / kBlock) - 1;  // the first one describes the slab

// Threads take and give back so many at a time: a lock then costs next to nothing a block.
constexpr int kBatch = 1024;
constexpr int kKept = 2 * kBatch;

/// What lies in a block that nobody uses.
struct Free
{
    Free *next;
    Free *nextBatch;  // in the first block of a batch
};

struct Batch
{
    Free *first;
    int count;
    bool isFresh;  // never used: nothing lies in the blocks yet
};

Free *chain(void *memory, int count)
{
    char *const blocks = static_cast<char *>(memory);
    Free *next = nullptr;
    for (int i = count; i-- > 0;)
        next = ::new (blocks + size_t(i) * kBlock) Free{next, nullptr};
    return next;
}

/// A stretch of blocks; lies in the first of them.
class Slab : public boost::intrusive::list_base_hook<>
{
public:
    static Slab &of(void *block) { return *reinterpret_cast<Slab *>(reinterpret_cast<uintptr_t>(block) & ~(kSlab - 1)); }

    bool isUnused() const { return returned_ == used_; }
    bool hasBatch() const { return batches_ || used_ < kSlabBlocks; }

    Batch take()
    {
        if (batches_)
        {
            const Batch batch = {batches_, kBatch, false};
            batches_ = batches_->nextBatch;
            returned_ -= kBatch;
            return batch;
        }
        const int count = std::min(kBatch, kSlabBlocks - used_);
        used_ += count;
        return {reinterpret_cast<Free *>(reinterpret_cast<char *>(this) + size_t(used_ - count + 1) * kBlock), count, true};
    }

    void put(Free *block)
    {
        ++returned_;
        block->next = open_;
        open_ = block;
        if (++openCount_ < kBatch)
            return;
        block->nextBatch = batches_;
        batches_ = block;
        open_ = nullptr;
        openCount_ = 0;
    }

private:
    Free *batches_ = nullptr;
    Free *open_ = nullptr;  // the batch that is not complete
    int openCount_ = 0;
    int used_ = 0;      // blocks that were ever taken: the first ones
    int returned_ = 0;  // of these, those that came back
};
static_assert(sizeof(Slab) <= kBlock);

/// Free blocks that no thread keeps.
class Depot
{
public:
    Batch take()
    {
        const std::lock_guard lock(mutex_);
        if (ready_.empty())
            addSlab();
        Slab &slab = ready_.front();
        const Batch batch = slab.take();
        if (!slab.hasBatch())
            ready_.pop_front();
        count(-batch.count);
        return batch;
    }

    /// Returns what follows after `number` blocks.
    Free *put(Free *blocks, int number)
    {
        const std::lock_guard lock(mutex_);
        count(number);
        for (int i = 0; i < number; ++i)
        {
            Free *const block = blocks;
            blocks = blocks->next;
            Slab &slab = Slab::of(block);
            slab.put(block);
            if (slab.isUnused())
                removeSlab(slab);
            else if (slab.hasBatch() && !slab.is_linked())
                ready_.push_front(slab);
        }
        return blocks;
    }

private:
    void addSlab()
    {
        void *const memory = BAS_LargeBlocks::allocate(kSlab);
        if (!memory)
            throw std::bad_alloc();
        ready_.push_front(*::new (memory) Slab);
        count(kSlabBlocks);
    }

    void removeSlab(Slab &slab)
    {
        if (slab.is_linked())
            ready_.erase(ready_.iterator_to(slab));
        slab.~Slab();
        BAS_LargeBlocks::release(&slab, kSlab);
        count(-kSlabBlocks);
    }

    static void count(int blocks) { BAS_MemoryTracker::add(BAS_MEMORY_POOL, blocks * int64_t(kBlock)); }

    std::mutex mutex_;
    boost::intrusive::list<Slab, boost::intrusive::constant_time_size<false>> ready_;  // those that have a batch
};

// Never destroyed: objects with static storage give their blocks back after any destructor of ours.
Depot &depot()
{
    static Depot &instance = *new Depot;
    return instance;
}

/// What the calling thread keeps.  Has no destructor, so that it can be used until the thread is no more.
struct Cache
{
    Free *first;
    int count;
    int most;  // 0 before the thread has a keeper, and after it
    bool hadKeeper;
};
constinit thread_local Cache cache = {};

/// Gives back what a thread keeps when it ends.
struct Keeper
{
    Keeper() { cache.most = kKept; }
    ~Keeper()
    {
        cache.most = 0;
        cache.first = depot().put(cache.first, cache.count);
        cache.count = 0;
    }
};

void beginKeeping()
{
    if (cache.hadKeeper)
        return;
    cache.hadKeeper = true;
    thread_local Keeper keeper;
}

[[gnu::noinline]] void giveBackTooMany()
{
    beginKeeping();
    if (cache.count <= cache.most)
        return;
    const int number = cache.most > 0 ? kBatch : cache.count;
    cache.first = depot().put(cache.first, number);
    cache.count -= number;
}

[[gnu::noinline]] void refill()
{
    beginKeeping();
    const Batch batch = depot().take();
    cache.first = batch.isFresh ? chain(batch.first, batch.count) : batch.first;
    cache.count = batch.count;
}
}  // namespace

void *BAS_SmallBlocks::allocate(size_t bytes)
{
    if (!kIsPooled || bytes > kBytes)
        return ::operator new(bytes);
    if (!cache.first)
        refill();
    Free *const block = cache.first;
    cache.first = block->next;
    if (--cache.count > cache.most)
        giveBackTooMany();
    return block;
}

void BAS_SmallBlocks::release(void *block, size_t bytes) noexcept
{
    if (!kIsPooled || bytes > kBytes)
        return ::operator delete(block, bytes);
    if (!block)
        return;
    cache.first = ::new (block) Free{cache.first, nullptr};
    if (++cache.count > cache.most)
        giveBackTooMany();
}

void BAS_SmallObject::operator delete(void *object, size_t bytes) noexcept { BAS_SmallBlocks::release(object, bytes); }

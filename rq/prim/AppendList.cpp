#include <rq/prim/detail/AppendList.h>

#include <iterator>
#include <memory>
#include <vector>

#include <rq/prim/Primitive.h>

namespace
{
using Lock = tbb::spin_mutex::scoped_lock;

// Threads share places beyond this many, which costs them time and nothing else.
constexpr unsigned kAsides = 16;

// Handing over costs some 200 ns when the list comes from another processor, an append 10 ns: a few per cent.
constexpr size_t kHandedOver = 256;

// The number of the calling thread, in order of first use.
unsigned threadNumber()
{
    static std::atomic<unsigned> next{0};
    thread_local const unsigned number = next++;
    return number;
}
}  // namespace

// What some thread has put aside, on cache lines of its own.
struct alignas(128) rq::AppendList::Aside
{
    tbb::spin_mutex mutex;
    std::vector<RQ_PrimitiveHandle> primitives;
};

rq::AppendList::~AppendList() { delete[] asides_.load(std::memory_order_relaxed); }

rq::AppendList &rq::AppendList::operator=(const AppendList &other)
{
    if (this == &other)
        return *this;
    clear();
    const int64_t count = other.entries();
    primitives_.grow_by(other.primitives_.begin(), other.primitives_.begin() + count);
    entries_.store(count, std::memory_order_release);
    return *this;
}

void rq::AppendList::reserve(int64_t count)
{
    if (count > 0 && size_t(count) <= primitives_.max_size())
        primitives_.reserve(size_t(count));
}

void rq::AppendList::clear()
{
    if (entries() == 0)
        return;
    entries_.store(0, std::memory_order_relaxed);
    primitives_.clear();
}

bool rq::AppendList::appendAtOnce(const RQ_PrimitiveHandle &primitive)
{
    Lock lock;
    if (!lock.try_acquire(mutex_))
        return false;
    primitives_.push_back(primitive);
    entries_.store(entries_.load(std::memory_order_relaxed) + 1, std::memory_order_release);
    return true;
}

rq::AppendList::Aside &rq::AppendList::ownAside()
{
    Aside *asides = asides_.load(std::memory_order_acquire);
    if (!asides)
    {
        auto made = std::make_unique<Aside[]>(kAsides);
        if (asides_.compare_exchange_strong(asides, made.get(), std::memory_order_acq_rel, std::memory_order_acquire))
            asides = made.release();
    }
    return asides[threadNumber() % kAsides];
}

void rq::AppendList::append(const RQ_PrimitiveHandle &primitive)
{
    if (!asides_.load(std::memory_order_acquire) && appendAtOnce(primitive))
        return;

    Aside &aside = ownAside();
    const Lock lock(aside.mutex);
    if (aside.primitives.empty())
        waiting_.fetch_add(1, std::memory_order_release);
    aside.primitives.push_back(primitive);
    if (aside.primitives.size() == kHandedOver)
        handOver(aside);
}

// The caller holds the lock of `aside`.
void rq::AppendList::handOver(Aside &aside) const
{
    if (aside.primitives.empty())
        return;
    const Lock lock(mutex_);
    primitives_.grow_by(std::make_move_iterator(aside.primitives.begin()), std::make_move_iterator(aside.primitives.end()));
    entries_.store(entries_.load(std::memory_order_relaxed) + int64_t(aside.primitives.size()), std::memory_order_release);
    waiting_.fetch_sub(1, std::memory_order_release);
    aside.primitives.clear();
}

int64_t rq::AppendList::entries() const
{
    if (waiting_.load(std::memory_order_acquire) > 0)
    {
        Aside *const asides = asides_.load(std::memory_order_acquire);
        for (unsigned i = 0; i < kAsides; ++i)
        {
            const Lock lock(asides[i].mutex);
            handOver(asides[i]);
        }
    }
    return entries_.load(std::memory_order_acquire);
}

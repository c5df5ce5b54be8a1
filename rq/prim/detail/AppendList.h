#pragma once

#include <atomic>

#include <tbb/concurrent_vector.h>
#include <tbb/spin_mutex.h>

#include <rq/prim/Refine.h>

namespace rq
{
/// A list of primitives that any number of threads append to.
///
/// Threads that meet at the list would send its cache lines to and fro for every primitive.  From the first time that one
/// finds it busy, each therefore puts aside what it brings, and hands that over many at a time.
///
/// Shape    in order of arrival; once threads have met, those of each thread, with others in between
/// Threads  `append` from any thread at any time, also while others read the entries that they counted before
/// Cost     an uncontended `append` takes one lock, `entries` one load while nothing is aside
class AppendList
{
public:
    AppendList() = default;
    AppendList(const AppendList &other) { *this = other; }
    AppendList &operator=(const AppendList &other);
    ~AppendList();

    void append(const RQ_PrimitiveHandle &primitive);
    void reserve(int64_t count);
    void clear();

    /// The number of primitives; includes all whose `append` has returned.
    int64_t entries() const;

    // The index must be below a number that `entries` answered.
    RQ_PrimitiveHandle &operator[](int64_t index) { return primitives_[size_t(index)]; }
    const RQ_PrimitiveHandle &operator[](int64_t index) const { return primitives_[size_t(index)]; }

private:
    struct Aside;

    bool appendAtOnce(const RQ_PrimitiveHandle &primitive);
    Aside &ownAside();
    void handOver(Aside &aside) const;

    // Looking at the list hands over what is aside.
    mutable tbb::spin_mutex mutex_;
    mutable std::atomic<int64_t> entries_{0};                        // those that are complete
    mutable std::atomic<int> waiting_{0};                            // places where something is aside
    mutable tbb::concurrent_vector<RQ_PrimitiveHandle> primitives_;  // grows without moving what readers look at

    // All threads read this all the time: not beside what they write.
    alignas(128) std::atomic<Aside *> asides_{nullptr};
};
}  // namespace rq

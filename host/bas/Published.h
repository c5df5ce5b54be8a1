#pragma once

#include <atomic>

#include <host/bas/Intrusive.h>

namespace host
{
/// A place for something that is built once, by whoever needs it first, and constant from then on.
///
/// T is intrusively counted.  Two threads may build at the same time: one result is published, the other dropped, so no
/// thread ever waits, and building may itself run in parallel.
template <class T> class Published
{
public:
    Published() = default;
    ~Published() { Handle drop(value_.load(std::memory_order_relaxed), false); }
    Published(const Published &) = delete;
    Published &operator=(const Published &) = delete;

    /// Null while nothing was published.
    const T *get() const { return value_.load(std::memory_order_acquire); }

    /// What is published; when nothing is, what `build()`, which returns a `BAS_IntrusivePtr<const T>`, makes.
    template <class Build> const T &getOrBuild(Build &&build) const
    {
        if (const T *value = get())
            return *value;
        Handle built = build();
        const T *expected = nullptr;
        if (value_.compare_exchange_strong(expected, built.get(), std::memory_order_acq_rel, std::memory_order_acquire))
            return *built.detach();
        return *expected;
    }

    /// Forget what was published.  For places that nobody else reads.
    void reset() { Handle drop(value_.exchange(nullptr, std::memory_order_acq_rel), false); }

    /// Take over what another place has published.  For places that nobody else knows yet.
    void share(const Published &other)
    {
        Handle shared(other.get());
        value_.store(shared.detach(), std::memory_order_release);
    }

private:
    using Handle = BAS_IntrusivePtr<const T>;

    mutable std::atomic<const T *> value_{nullptr};  // one count
};

/// The same for values that are copied: a copy builds anew.
template <class T> class PublishedCache : public Published<T>
{
public:
    PublishedCache() = default;
    PublishedCache(const PublishedCache &) : Published<T>() {}
    PublishedCache &operator=(const PublishedCache &) = delete;
};
}  // namespace host

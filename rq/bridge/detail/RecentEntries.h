#pragma once

#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

#include <host/plt/types.h>

namespace rq
{
/// Results by key, of which the ones that were not asked for the longest are dropped when all together get too large.
///
/// Threads  safe from any thread; a result that somebody holds stays good when it is dropped
/// Cost     the same for few and for many results
class RecentEntries
{
public:
    struct Entry
    {
        virtual ~Entry() = default;

        /// Bytes that it keeps, which may grow.
        virtual int64_t getMemoryUsage() const = 0;
    };
    using EntryHandle = std::shared_ptr<const Entry>;

    explicit RecentEntries(int64_t mostBytes) : mostBytes_(mostBytes) {}

    /// Null when there is none.
    EntryHandle find(const std::string &key)
    {
        const std::lock_guard lock(mutex_);
        const auto found = places_.find(key);
        if (found == places_.end())
            return nullptr;
        kept_.splice(kept_.begin(), kept_, found->second);
        return found->second->entry;
    }

    /// Store a result, in the place of one of that key.
    void store(const std::string &key, EntryHandle entry)
    {
        std::list<Kept> dropped;  // destroyed when nobody waits for the lock
        const std::lock_guard lock(mutex_);
        if (const auto found = places_.find(key); found != places_.end())
            drop(found->second, dropped);
        const int64_t bytes = entry->getMemoryUsage();
        kept_.push_front({key, std::move(entry), bytes});
        places_[key] = kept_.begin();
        bytes_ += bytes;
        // They grow as they are used.
        if (++storesSinceMeasured_ * kEntriesPerStore >= kept_.size())
            measure();
        while (bytes_ > mostBytes_ && !kept_.empty())
            drop(std::prev(kept_.end()), dropped);
    }

    void clear()
    {
        std::list<Kept> dropped;
        const std::lock_guard lock(mutex_);
        places_.clear();
        dropped.swap(kept_);
        bytes_ = 0;
    }

    int64_t getMemoryUsage() const
    {
        const std::lock_guard lock(mutex_);
        int64_t bytes = 0;
        for (const Kept &kept : kept_)
            bytes += kept.entry->getMemoryUsage();
        return bytes;
    }

private:
    struct Kept
    {
        std::string key;
        EntryHandle entry;
        int64_t bytes;  // when it was measured last
    };

    // All are measured after one store for so many of them.
    static constexpr size_t kEntriesPerStore = 16;

    void measure()
    {
        storesSinceMeasured_ = 0;
        bytes_ = 0;
        for (Kept &kept : kept_)
            bytes_ += kept.bytes = kept.entry->getMemoryUsage();
    }

    void drop(std::list<Kept>::iterator kept, std::list<Kept> &dropped)
    {
        bytes_ -= kept->bytes;
        places_.erase(kept->key);
        dropped.splice(dropped.end(), kept_, kept);
    }

    int64_t mostBytes_;
    mutable std::mutex mutex_;
    std::list<Kept> kept_;  // the one that was asked for last comes first
    std::unordered_map<std::string, std::list<Kept>::iterator> places_;
    int64_t bytes_ = 0;
    size_t storesSinceMeasured_ = 0;
};
}  // namespace rq

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
        entries_.splice(entries_.begin(), entries_, found->second);
        return found->second->second;
    }

    /// Store a result, in the place of one of that key.
    void store(const std::string &key, EntryHandle entry)
    {
        std::list<std::pair<std::string, EntryHandle>> dropped;  // destroyed when nobody waits for the lock
        const std::lock_guard lock(mutex_);
        if (const auto found = places_.find(key); found != places_.end())
            dropped.splice(dropped.end(), entries_, found->second);
        entries_.emplace_front(key, std::move(entry));
        places_[key] = entries_.begin();
        int64_t bytes = 0;
        for (auto kept = entries_.begin(); kept != entries_.end();)
        {
            const auto next = std::next(kept);
            bytes += kept->second->getMemoryUsage();
            if (bytes > mostBytes_)
            {
                places_.erase(kept->first);
                dropped.splice(dropped.end(), entries_, kept);
            }
            kept = next;
        }
    }

    void clear()
    {
        std::list<std::pair<std::string, EntryHandle>> dropped;
        const std::lock_guard lock(mutex_);
        places_.clear();
        dropped.swap(entries_);
    }

    int64_t getMemoryUsage() const
    {
        const std::lock_guard lock(mutex_);
        int64_t bytes = 0;
        for (const auto &[key, entry] : entries_)
            bytes += entry->getMemoryUsage();
        return bytes;
    }

private:
    int64_t mostBytes_;
    mutable std::mutex mutex_;
    std::list<std::pair<std::string, EntryHandle>> entries_;  // the one that was asked for last comes first
    std::unordered_map<std::string, std::list<std::pair<std::string, EntryHandle>>::iterator> places_;
};
}  // namespace rq

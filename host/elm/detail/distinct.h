#pragma once

#include <unordered_map>

#include <host/bas/MemoryTracker.h>
#include <host/bas/OptionsHolder.h>
#include <host/bas/hashBytes.h>

// What tables of distinct values are made of.
namespace host
{
/// Places in a table by the hash of what lies there.
class Places
{
public:
    /// The place with this hash for which `isSame(place)`; -1 without one.
    template <class IsSame> int32_t find(uint64_t hash, IsSame &&isSame) const
    {
        const auto [begin, end] = places_.equal_range(hash);
        for (auto at = begin; at != end; ++at)
            if (isSame(at->second))
                return at->second;
        return -1;
    }
    void add(uint64_t hash, int32_t place) { places_.emplace(hash, place); }

    // An entry, its link and its bucket.
    int64_t memoryUsage() const { return int64_t(places_.size() * 5 * sizeof(void *)); }

private:
    std::unordered_multimap<uint64_t, int32_t> places_;
};

/// Bytes of a table, counted by the memory tracker while the table lives.
class TableBytes
{
public:
    TableBytes() = default;
    TableBytes(const TableBytes &other) { set(other.bytes_); }
    TableBytes &operator=(const TableBytes &) = delete;
    ~TableBytes() { set(0); }

    void set(int64_t bytes)
    {
        BAS_MemoryTracker::add(BAS_MEMORY_HOST_TABLE, bytes - bytes_);
        bytes_ = bytes;
    }
    void add(int64_t bytes) { set(bytes_ + bytes); }
    int64_t get() const { return bytes_; }

private:
    int64_t bytes_ = 0;
};

inline uint64_t hashOf(std::string_view text) { return hashBytes(text); }
inline uint64_t hashOf(const BAS_StringHolder &text) { return hashBytes(text.view()); }
inline uint64_t hashOf(const BAS_OptionsHolder &options) { return hashWord(0xD1C7, options.hash()); }
}  // namespace host

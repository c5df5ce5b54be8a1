#pragma once

#include <cstdint>
#include <vector>

#include <host/plt/types.h>

/// A growable row of bits in 64-bit words.
///
/// Failure  positions are not checked
/// Threads  different words may be written from different threads
class HOST_API BAS_BitArray
{
public:
    BAS_BitArray() = default;
    explicit BAS_BitArray(int64_t size, bool value = false);

    int64_t size() const { return size_; }
    void resize(int64_t size, bool value = false);

    bool get(int64_t i) const { return words_[i >> 6] >> (i & 63) & 1; }
    void set(int64_t i, bool value = true)
    {
        const uint64_t bit = uint64_t(1) << (i & 63);
        words_[i >> 6] = value ? words_[i >> 6] | bit : words_[i >> 6] & ~bit;
    }
    void setAll(bool value);

    /// Number of bits that are set.
    int64_t count() const;

    /// The first set bit at or after `from`, `size()` when there is none.
    int64_t next(int64_t from) const;

    int64_t wordCount() const { return int64_t(words_.size()); }
    uint64_t *words() { return words_.data(); }
    const uint64_t *words() const { return words_.data(); }
    int64_t getMemoryUsage() const { return int64_t(words_.capacity() * sizeof(uint64_t)); }

    bool operator==(const BAS_BitArray &) const = default;

private:
    std::vector<uint64_t> words_;  // bits past the size are 0
    int64_t size_ = 0;
};

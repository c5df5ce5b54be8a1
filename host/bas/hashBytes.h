#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

namespace host
{
/// Fold one word into a running hash.
constexpr uint64_t hashWord(uint64_t hash, uint64_t word)
{
    hash = (hash ^ word) * 0x9E3779B97F4A7C15ull;
    return hash ^ (hash >> 29);
}

/// Hash a text.  The same text gives the same hash in every process.
inline uint64_t hashBytes(std::string_view text)
{
    uint64_t hash = hashWord(0x5AFE, text.size());
    size_t at = 0;
    for (; at + sizeof(uint64_t) <= text.size(); at += sizeof(uint64_t))
    {
        uint64_t word;
        std::memcpy(&word, text.data() + at, sizeof(word));
        hash = hashWord(hash, word);
    }
    uint64_t rest = 0;
    for (int shift = 0; at < text.size(); ++at, shift += 8)
        rest |= uint64_t(uint8_t(text[at])) << shift;
    return hashWord(hash, rest);
}
}  // namespace host

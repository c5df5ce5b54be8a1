#pragma once

#include <cstdint>

/// Scramble a 64-bit id or hash.  Every hash of data ids is made with this one mix, so that equal inputs give equal
/// hashes everywhere.
constexpr uint64_t RQmixId(uint64_t key)
{
    key += ~(key << 32);
    key ^= key >> 22;
    key += ~(key << 13);
    key ^= key >> 8;
    key *= 9;
    key ^= key >> 15;
    key += ~(key << 27);
    key ^= key >> 31;
    return key;
}

namespace rq
{
/// A mixed id as a data id, which must not be -1: that means "has none".
constexpr int64_t validId(uint64_t mixed) { return int64_t(mixed) == -1 ? 0 : int64_t(mixed); }
}  // namespace rq

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

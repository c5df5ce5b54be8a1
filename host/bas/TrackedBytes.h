#pragma once

#include <host/bas/MemoryTracker.h>

/// Bytes that count under a category of `BAS_MemoryTracker` for as long as the object lives; a copy counts them again.
template <BAS_MemoryCategory kCategory> class BAS_TrackedBytes
{
public:
    explicit BAS_TrackedBytes(int64_t bytes) : bytes_(bytes) { BAS_MemoryTracker::add(kCategory, bytes_); }
    BAS_TrackedBytes(const BAS_TrackedBytes &other) : BAS_TrackedBytes(other.bytes_) {}
    BAS_TrackedBytes &operator=(const BAS_TrackedBytes &) = delete;
    ~BAS_TrackedBytes() { BAS_MemoryTracker::add(kCategory, -bytes_); }

private:
    int64_t bytes_;
};

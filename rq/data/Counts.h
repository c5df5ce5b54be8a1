#pragma once

#include <rq/data/CountArray.h>

namespace rq
{
/// Read a count array in loops: no virtual call, and no memory for equal counts.
///
/// Ownership  keeps the running totals alive
/// Threads    safe to read from any thread
class Counts
{
public:
    Counts() = default;
    explicit Counts(const RQ_CountArray &counts) : entries_(counts.entries()), count_(counts.getMaxCount())
    {
        if (counts.isUniform() || entries_ == 0)
            return;
        if (counts.getStorage() == RQ_STORAGE_INT32)
            ends32_ = counts.rawOffsets()->getI32Array(buffer_);
        else
            ends64_ = counts.rawOffsets()->getI64Array(buffer_);
    }

    int64_t entries() const { return entries_; }
    int64_t sum() const { return begin(entries_); }

    /// The count of every item when they are all the same, -1 otherwise.
    int64_t uniform() const { return ends32_ || ends64_ ? -1 : count_; }

    /// Where item `i` begins; `begin(entries())` is the sum.
    int64_t begin(int64_t i) const
    {
        if (ends32_)
            return i > 0 ? ends32_[i - 1] : 0;
        if (ends64_)
            return i > 0 ? ends64_[i - 1] : 0;
        return i * count_;
    }
    int64_t end(int64_t i) const { return begin(i + 1); }
    int64_t count(int64_t i) const { return begin(i + 1) - begin(i); }

private:
    RQ_DataArrayHandle buffer_;
    const int32_t *ends32_ = nullptr;
    const int64_t *ends64_ = nullptr;
    int64_t entries_ = 0;
    int64_t count_ = 0;
};
}  // namespace rq

#pragma once

#include <utility>

#include <rq/data/DataArray.h>

/// Counts per item, such as the vertices of each face, kept as running totals so that both the count and the place of an
/// item are found at once.  See `rq::Counts` for reading them in a loop.
///
/// Shape      stored value i is the end of item i: the sum of the counts 0..i; 32-bit unless the total needs 64
/// Failure    negative counts count as 0, so totals never fall; counts beyond all numbering (2^49) make no items
/// Ownership  a plain value; copies share the totals
/// Threads    safe to read from any thread once initialised
/// Cost       equal counts take no memory, whatever their number
class RQ_API RQ_CountArray
{
public:
    RQ_CountArray() = default;

    /// Make `n` items of the same count.
    RQ_CountArray(int64_t n, int64_t count) { init(n, count); }
    explicit RQ_CountArray(const RQ_DataArrayHandle &counts) { init(counts); }

    void init(int64_t n, int64_t count);

    /// Take the counts from an array.  Minimum and maximum may be given, both at least 1, and are trusted: they are what
    /// `getMinCount` and `getMaxCount` answer, and equal ones mean that all counts are the same, which spares reading them.
    /// No items for a null array and for tuples.
    void init(const RQ_DataArrayHandle &counts, int64_t minCount = -1, int64_t maxCount = -1);

    /// Back to no items.
    void clear();

    /// Number of items.
    int64_t entries() const { return offsets_ ? offsets_->entries() : 0; }

    /// Where item `i` begins.
    int64_t getOffset(int64_t i) const { return isUniform() ? i * maxCount_ : i > 0 ? offsets_->getI64(i - 1) : 0; }
    int64_t getCount(int64_t i) const { return isUniform() ? maxCount_ : offsets_->getI64(i) - getOffset(i); }

    /// Where item `i` begins, and its count.
    std::pair<int64_t, int64_t> getOffsetCount(int64_t i) const;

    int64_t sumCounts() const;

    /// Least and greatest count.  Taken from an array without items: 2147483647 and 0.
    int64_t getMinCount() const { return minCount_; }
    int64_t getMaxCount() const { return maxCount_; }

    /// True when all counts are the same; nothing is stored per item then.
    bool isUniform() const { return minCount_ == maxCount_; }

    RQ_Storage getStorage() const { return offsets_ ? offsets_->getStorage() : RQ_STORAGE_INT32; }
    int64_t getMemoryUsage() const { return 24 + (offsets_ ? offsets_->getMemoryUsage() : 0); }

    /// The stored running totals, null when there are none.
    const RQ_DataArrayHandle &rawOffsets() const { return offsets_; }

    /// The counts as an array; a constant when they are all the same.
    RQ_DataArrayHandle extractCounts() const;

    /// Where each item begins, and behind the last where it ends: n + 1 values from 0 to the sum.
    RQ_DataArrayHandle extractOffsets() const;

    /// The item that each element belongs to: `i` repeated `getCount(i)` times.
    RQ_DataArrayHandle buildRepeatList() const;

    /// Replace the totals by an owning copy.
    void harden();

    bool isEqual(const RQ_CountArray &other) const;

    /// Write the counts as a plain JSON array.
    bool save(BAS_JSONWriter &writer) const;

private:
    template <class T> void initTotals(const RQ_DataArray &counts, bool trusted, int64_t minCount, int64_t maxCount);

    RQ_DataArrayHandle offsets_;
    int64_t minCount_ = 0;
    int64_t maxCount_ = 0;
};

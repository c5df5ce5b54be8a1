#pragma once

#include <host/bas/SmallBlocks.h>
#include <rq/data/DAInherit.h>
#include <rq/data/TypedArray.h>

/// A window of consecutive entries of another array, without copying.
///
/// Shape      entry i is entry `first + i` of the source; storage, tuple size and type are the source's
/// Ownership  shares the source through a handle; `harden` makes an owning copy
/// Threads    immutable after construction, safe to read from any thread
/// Cost       one extra virtual call per value, one per block through `fillArray`; none through `getArray` when the source
///            holds contiguous values
class RQ_API RQ_DASubArray final : public RQ_TypedArray<RQ_DASubArray, RQ_DAInherit>, public BAS_SmallObject
{
public:
    /// View `length` entries of `source`, starting at entry `first`.
    ///
    /// Returns the source itself when the window covers all of it, and a null handle when `source` is null or the window
    /// does not lie inside it.  A window of a window views the inner source.
    static RQ_DataArrayHandle createSubArray(const RQ_DataArrayHandle &source, int64_t first, int64_t length);

    const char *className() const override;
    int64_t entries() const override { return length_; }
    int64_t getMemoryUsage() const override { return sizeof(*this); }
    const void *getBackingData() const override;
    int64_t getIndirect(int64_t offset) const override { return first_ + offset; }

private:
    friend RQ_TypedArray<RQ_DASubArray, RQ_DAInherit>;

    RQ_DASubArray(const RQ_DataArrayHandle &source, int64_t first, int64_t length);

    template <RQ_NumericValue T> T valueAs(int64_t offset, int component) const;
    template <RQ_NumericValue T> void fillBlock(T *out, int64_t start, int64_t length, int components, int stride) const;

    int64_t first_;
    int64_t length_;
};

extern template class RQ_TypedArray<RQ_DASubArray, RQ_DAInherit>;

#pragma once

#include <host/bas/SmallBlocks.h>
#include <rq/data/DAInherit.h>
#include <rq/data/TypedArray.h>

/// One entry of another array, repeated.
///
/// Shape      every entry is entry `getIndirect` of the source; storage, tuple size and type are the source's
/// Ownership  shares the source through a handle; `harden` makes an owning copy
/// Threads    immutable once shared, safe to read from any thread
/// Cost       the same few bytes for any number of entries
class RQ_API RQ_DAConstant final : public RQ_TypedArray<RQ_DAConstant, RQ_DAInherit>, public BAS_SmallObject
{
public:
    RQ_DAConstant() = default;

    /// Repeat entry `index` of `source`, `size` times; replaces what was shown before.
    void init(const RQ_DataArrayHandle &source, int64_t index, int64_t size);

    /// Repeat entry `index` of `source`, `size` times.
    ///
    /// Returns the source itself when it already is such a constant of the same index and size, or when it is the one entry
    /// asked for; a null handle when `source` is null or has no entry `index` to repeat.
    static RQ_DataArrayHandle createConstant(const RQ_DataArrayHandle &source, int64_t index, int64_t size);

    const char *className() const override;
    int64_t entries() const override { return size_; }
    int64_t getTotalArrayEntries() const override { return size_ > 0 ? size_ * itemSize(0) : 0; }
    int64_t getMemoryUsage() const override { return sizeof(*this); }
    int64_t getIndirect(int64_t) const override { return index_; }

private:
    friend RQ_TypedArray<RQ_DAConstant, RQ_DAInherit>;

    template <RQ_NumericValue T> T valueAs(int64_t offset, int component) const;
    template <RQ_NumericValue T> void fillBlock(T *out, int64_t start, int64_t length, int components, int stride) const;
    bool computeMinMax(double *min, double *max) const override;

    int64_t index_ = 0;
    int64_t size_ = 0;
};

extern template class RQ_TypedArray<RQ_DAConstant, RQ_DAInherit>;

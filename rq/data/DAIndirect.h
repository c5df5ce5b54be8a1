#pragma once

#include <rq/data/DAInherit.h>
#include <rq/data/TypedArray.h>

/// Entries of another array, in the order of an index array.
///
/// Shape      entry i is entry `indices[i]` of the source; storage, tuple size and type are the source's
/// Failure    indices are not checked: each must be an entry of the source
/// Ownership  shares the source and the indices through handles; `harden` makes an owning copy
/// Threads    immutable after construction, safe to read from any thread
/// Cost       one extra virtual call per value; blocks of contiguous sources, and of views of them, are gathered by plain
///            loops, in parallel when large
class RQ_API RQ_DAIndirect final : public RQ_TypedArray<RQ_DAIndirect, RQ_DAInherit>
{
public:
    /// View `source` through `indices`.
    ///
    /// With `flatten`, a source that is a view of entries of another array, such as an indirection, window, clamp or
    /// constant, is replaced by the array at the end of the chain, with the indices composed: reads then take one step, and
    /// the new index array costs memory.  Returns a null handle when either array is null or the indices are not one integer
    /// component.
    static RQ_DataArrayHandle createIndirect(const RQ_DataArrayHandle &source, const RQ_DataArrayHandle &indices,
                                             bool flatten = false);

    const char *className() const override;
    int64_t entries() const override { return size_; }
    int64_t getMemoryUsage() const override;
    int64_t getIndirect(int64_t offset) const override { return indices32_ ? indices32_[offset] : indices64_[offset]; }

    const RQ_DataArrayHandle &indices() const { return indices_; }

private:
    friend RQ_TypedArray<RQ_DAIndirect, RQ_DAInherit>;

    RQ_DAIndirect(const RQ_DataArrayHandle &source, const RQ_DataArrayHandle &indices);

    template <RQ_NumericValue T> T valueAs(int64_t offset, int component) const;
    template <RQ_NumericValue T> void fillBlock(T *out, int64_t start, int64_t length, int components, int stride) const;

    // A block of a source that has no memory of its own: the indices of stacked views are composed first, then the rows of
    // what lies beneath are read.
    template <RQ_NumericValue T>
    void fillThroughViews(T *out, int64_t start, int64_t length, int components, int stride) const;

    RQ_DataArrayHandle indices_;  // contiguous 32- or 64-bit integers; one of the pointers below
    const int32_t *indices32_ = nullptr;
    const int64_t *indices64_ = nullptr;
    int64_t size_ = 0;
};

extern template class RQ_TypedArray<RQ_DAIndirect, RQ_DAInherit>;

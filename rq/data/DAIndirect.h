#pragma once

#include <atomic>

#include <rq/data/DAInherit.h>
#include <rq/data/TypedArray.h>

/// Entries of another array, in the order of an index array.
///
/// Shape      entry i is entry `indices[i]` of the source; storage, tuple size and type are the source's
/// Failure    indices are not checked: each must be an entry of the source
/// Ownership  shares the source and the indices through handles; `harden` makes an owning copy
/// Threads    immutable after construction, safe to read from any thread
/// Cost       one extra virtual call per value; blocks of contiguous sources are gathered by plain loops, in parallel when
///            large.  A view of views composes the indices of all when the first block of 1024 entries or more is read, and
///            keeps them: this read costs about twice that of a flattened one, and from then on as much, in memory too
class RQ_API RQ_DAIndirect final : public RQ_TypedArray<RQ_DAIndirect, RQ_DAInherit>
{
public:
    /// View `source` through `indices`.
    ///
    /// With `flatten`, a source that is a view of entries of another array, such as an indirection, window, clamp or
    /// constant, is replaced by the array at the end of the chain, with the indices composed.  Returns a null handle when
    /// either array is null or the indices are not one integer component.
    static RQ_DataArrayHandle createIndirect(const RQ_DataArrayHandle &source, const RQ_DataArrayHandle &indices,
                                             bool flatten = false);

    const char *className() const override;
    int64_t entries() const override { return size_; }
    int64_t getMemoryUsage() const override;
    int64_t getIndirect(int64_t offset) const override { return indices32_ ? indices32_[offset] : indices64_[offset]; }

    void updateGeoDetail(const MOD_ConstDetailHandle &detail, const char *name, RQ_Owner owner, int segment) override;

    const RQ_DataArrayHandle &indices() const { return indices_; }

private:
    friend RQ_TypedArray<RQ_DAIndirect, RQ_DAInherit>;

    RQ_DAIndirect(const RQ_DataArrayHandle &source, const RQ_DataArrayHandle &indices);

    template <RQ_NumericValue T> T valueAs(int64_t offset, int component) const;
    template <RQ_NumericValue T> void fillBlock(T *out, int64_t start, int64_t length, int components, int stride) const;

    class Chain;

    // The same entries of the array at the end of the chain of views.
    RQ_DataArrayHandle flatten() const;

    // The flattened view, made by the first caller; null until it is there, and when a view beneath has changed since.
    const RQ_DAIndirect *flattened() const;

    RQ_DataArrayHandle indices_;  // contiguous 32- or 64-bit integers; one of the pointers below
    const int32_t *indices32_ = nullptr;
    const int64_t *indices64_ = nullptr;
    int64_t size_ = 0;

    // What `flattened` made; it has the data id that the source had then.
    mutable std::atomic_flag claimed_;
    mutable std::atomic<const RQ_DAIndirect *> flattened_ = nullptr;
    mutable RQ_DataArrayHandle flat_;
};

extern template class RQ_TypedArray<RQ_DAIndirect, RQ_DAInherit>;

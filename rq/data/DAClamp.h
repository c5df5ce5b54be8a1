#pragma once

#include <rq/data/DAInherit.h>
#include <rq/data/TypedArray.h>

/// Another array made longer: entries past its end repeat its last one.
///
/// Shape      entry i is entry clamp(i, 0, n - 1) of the n of the source; storage, tuple size and type are the source's
/// Ownership  shares the source through a handle; `harden` makes an owning copy
/// Threads    immutable after construction, safe to read from any thread
/// Cost       the same few bytes for any number of entries; a block takes one call to the source, and one more past its end
class RQ_API RQ_DAClamp final : public RQ_TypedArray<RQ_DAClamp, RQ_DAInherit>
{
public:
    /// View `source` as `size` entries; a size below 0 counts as 0.
    ///
    /// Returns the source itself, or a window of it, when nothing lies past its end, and a null handle when `source` is null
    /// or has no entry to repeat.  A clamp of a clamp views the inner source.
    static RQ_DataArrayHandle createClamp(const RQ_DataArrayHandle &source, int64_t size);

    const char *className() const override;
    int64_t entries() const override { return last_ < 0 ? 0 : size_; }
    int64_t getMemoryUsage() const override { return sizeof(*this); }
    int64_t getIndirect(int64_t offset) const override { return offset < 0 ? 0 : offset < last_ ? offset : last_; }
    void updateGeoDetail(const MOD_ConstDetailHandle &detail, const char *name, RQ_Owner owner, int segment) override;

private:
    friend RQ_TypedArray<RQ_DAClamp, RQ_DAInherit>;

    RQ_DAClamp(const RQ_DataArrayHandle &source, int64_t size);

    template <RQ_NumericValue T> T valueAs(int64_t offset, int component) const;
    template <RQ_NumericValue T> void fillBlock(T *out, int64_t start, int64_t length, int components, int stride) const;
    bool computeMinMax(double *min, double *max) const override;

    int64_t last_;  // the last entry of the source
    int64_t size_;
};

extern template class RQ_TypedArray<RQ_DAClamp, RQ_DAInherit>;

#pragma once

#include <host/bas/BitArray.h>
#include <host/bas/TrackedBytes.h>
#include <rq/data/DANumbers.h>
#include <rq/data/TypedArray.h>

/// One bit per value, which reads as 0 or 1.
///
/// Shape    storage uint8; the bits of each component lie together
/// Failure  single reads out of range give 0, writes out of range do nothing
/// Threads  written by one thread before it is shared; read-only from then on
class RQ_API RQ_DABool final : public RQ_TypedArray<RQ_DABool, RQ_DANumbers>
{
public:
    /// All bits are 0 at first.
    explicit RQ_DABool(int64_t size = 0, int64_t tupleSize = 1, RQ_Type type = RQ_TYPE_NONE);

    const char *className() const override;
    RQ_Storage getStorage() const override { return RQ_STORAGE_UINT8; }
    int64_t entries() const override { return bits_.empty() ? 0 : bits_[0].size(); }
    int64_t getTupleSize() const override { return tupleSize_; }
    int64_t getMemoryUsage() const override;
    RQ_Type getTypeInfo() const override { return type_; }

    bool getBit(int64_t index, int component = 0) const
    {
        return isInside(index, component) && bits_[size_t(component)].get(index);
    }
    void setBit(int64_t index, bool value, int component = 0);
    void setAllBits(bool value, int component = 0);

    /// The bits of a component.
    const BAS_BitArray &bits(int component = 0) const { return bits_[size_t(component)]; }

private:
    friend RQ_TypedArray<RQ_DABool, RQ_DANumbers>;

    bool isInside(int64_t index, int component) const
    {
        return uint64_t(component) < bits_.size() && uint64_t(index) < uint64_t(bits_[0].size());
    }

    template <RQ_NumericValue T> T valueAs(int64_t offset, int component) const;
    template <RQ_NumericValue T> void fillBlock(T *out, int64_t start, int64_t length, int components, int stride) const;
    bool computeMinMax(double *min, double *max) const override;

    BAS_Array<BAS_BitArray> bits_;
    int64_t tupleSize_;
    RQ_Type type_;
    BAS_TrackedBytes<BAS_MEMORY_ARRAY> tracked_;
};

extern template class RQ_TypedArray<RQ_DABool, RQ_DANumbers>;

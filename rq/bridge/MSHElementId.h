#pragma once

#include <rq/bridge/MSHOffsetList.h>
#include <rq/data/DANumbers.h>
#include <rq/data/TypedArray.h>

/// The host elements behind the rows of a primitive, as numbers.
///
/// Shape      row i is offset i of the list; mapped from vertices it is the point of that vertex when `owner` is point, else
///            the primitive that the vertex belongs to.  32-bit integers while the offsets are below 2^30 and all elements
///            that they are mapped to can be numbered so, else 64-bit ones
/// Failure    no entries without a detail; -1 for a vertex without a point
/// Ownership  keeps the snapshot of the detail alive
/// Threads    immutable, safe to read from any thread
class RQ_API RQ_MSHElementId final : public RQ_TypedArray<RQ_MSHElementId, RQ_DANumbers>
{
public:
    RQ_MSHElementId(const MOD_ConstDetailHandle &detail, const RQ_MSHOffsetList &offsets, ELM_Owner owner,
                    bool mapFromVertices);
    ~RQ_MSHElementId() override;

    const char *className() const override;
    RQ_Storage getStorage() const override { return isNarrow_ ? RQ_STORAGE_INT32 : RQ_STORAGE_INT64; }
    int64_t entries() const override { return offsets_.entries(); }
    int64_t getTupleSize() const override { return 1; }
    int64_t getMemoryUsage() const override { return int64_t(sizeof(*this)) + offsets_.offsetList().memoryUsage(); }
    RQ_Type getTypeInfo() const override { return RQ_TYPE_NONE; }
    const void *getBackingData() const override;
    bool getPointerAliasing(const void *data) const override;

private:
    friend RQ_TypedArray<RQ_MSHElementId, RQ_DANumbers>;

    template <RQ_NumericValue T> T valueAs(int64_t offset, int component) const;
    template <RQ_NumericValue T> void fillBlock(T *out, int64_t start, int64_t length, int components, int stride) const;

    MOD_ConstDetailHandle detail_;
    RQ_MSHOffsetList offsets_;
    const ELM_IndexColumn *map_ = nullptr;  // of the detail; null: the offsets themselves
    bool isNarrow_ = true;
};

extern template class RQ_TypedArray<RQ_MSHElementId, RQ_DANumbers>;

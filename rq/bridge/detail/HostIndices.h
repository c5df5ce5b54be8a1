#pragma once

#include <host/elm/IndexColumn.h>
#include <rq/data/DANumbers.h>
#include <rq/data/TypedArray.h>

namespace rq
{
/// 32-bit integers that lie in a detail's own memory.
///
/// Ownership  keeps the column alive, which later snapshots share while the topology stays, but not the detail
/// Threads    immutable, safe to read from any thread
class HostIndices final : public RQ_TypedArray<HostIndices, RQ_DANumbers>
{
public:
    /// `dataId` names the values: the same for the same indices of the same topology.
    HostIndices(const ELM_IndexColumn &column, const int32_t *values, int64_t entries, int64_t dataId)
        : column_(column), values_(values), entries_(entries)
    {
        setDataId(dataId);
    }

    const char *className() const override;
    RQ_Storage getStorage() const override { return RQ_STORAGE_INT32; }
    int64_t entries() const override { return entries_; }
    int64_t getTupleSize() const override { return 1; }
    int64_t getMemoryUsage() const override { return int64_t(sizeof(*this)); }
    bool getPointerAliasing(const void *data) const override { return data >= values_ && data < values_ + entries_; }
    const void *getBackingData() const override { return values_; }

private:
    friend RQ_TypedArray<HostIndices, RQ_DANumbers>;

    template <RQ_NumericValue T> T valueAs(int64_t offset, int component) const;
    template <RQ_NumericValue T> void fillBlock(T *out, int64_t start, int64_t length, int components, int stride) const;

    ELM_IndexColumn column_;
    const int32_t *values_;
    int64_t entries_;
};
}  // namespace rq

extern template class RQ_TypedArray<rq::HostIndices, RQ_DANumbers>;

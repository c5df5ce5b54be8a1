#pragma once

#include <host/bas/TrackedBytes.h>
#include <rq/data/DATexts.h>

/// Strings or dictionaries, with every distinct one kept once and an index per value.
///
/// Shape  value (entry, component) is number `index` of the list; an index below 0 or past the list is the empty value
template <class Value> class RQ_API RQ_DAIndexedText final : public RQ_DATexts<Value>
{
public:
    /// Take over distinct values and one index per value, `indices.size() / tupleSize` entries.
    RQ_DAIndexedText(BAS_Array<Value> distinct, BAS_ValArray<int32_t> indices, int64_t tupleSize = 1,
                     RQ_Type type = RQ_TYPE_NONE);

    /// Index `entries * tupleSize` values, given in order.  Distinct values are numbered by their first use; the empty value
    /// gets no number.
    static RQ_DataArrayHandle createIndexed(const Value *values, int64_t entries, int64_t tupleSize = 1,
                                            RQ_Type type = RQ_TYPE_NONE);

    const char *className() const override;
    int64_t entries() const override { return int64_t(indices_.size()) / this->getTupleSize(); }
    int64_t getMemoryUsage() const override;

protected:
    const Value &valueAt(int64_t offset, int idx) const override;
    const BAS_Array<Value> *distinct() const override { return &distinct_; }
    int64_t indexAt(int64_t offset, int idx) const override;

private:
    BAS_Array<Value> distinct_;
    BAS_ValArray<int32_t> indices_;
    BAS_TrackedBytes<BAS_MEMORY_ARRAY> tracked_;
};

using RQ_DAIndexedString = RQ_DAIndexedText<BAS_StringHolder>;
using RQ_DAIndexedDict = RQ_DAIndexedText<BAS_OptionsHolder>;

extern template class RQ_DAIndexedText<BAS_StringHolder>;
extern template class RQ_DAIndexedText<BAS_OptionsHolder>;

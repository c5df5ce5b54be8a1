#pragma once

#include <rq/data/DATexts.h>

/// One string or dictionary for every component of every entry.
///
/// Shape  indexed: the value has index 0, and the empty value none
/// Cost   the same few bytes for any number of entries
template <class Value> class RQ_API RQ_DAConstantText final : public RQ_DATexts<Value>
{
public:
    RQ_DAConstantText(int64_t size, const Value &value, int64_t tupleSize = 1, RQ_Type type = RQ_TYPE_NONE);

    const char *className() const override;
    int64_t entries() const override { return size_; }
    int64_t getMemoryUsage() const override;

    const Value &value() const { return distinct_.empty() ? this->none() : distinct_[0]; }

protected:
    const Value &valueAt(int64_t, int) const override { return value(); }
    const BAS_Array<Value> *distinct() const override { return &distinct_; }
    int64_t indexAt(int64_t, int) const override { return int64_t(distinct_.size()) - 1; }

private:
    int64_t size_;
    BAS_Array<Value> distinct_;  // the value, unless it is the empty one
};

using RQ_DAConstantString = RQ_DAConstantText<BAS_StringHolder>;
using RQ_DAConstantDict = RQ_DAConstantText<BAS_OptionsHolder>;

extern template class RQ_DAConstantText<BAS_StringHolder>;
extern template class RQ_DAConstantText<BAS_OptionsHolder>;

#pragma once

#include <host/bas/TrackedBytes.h>
#include <rq/data/DATexts.h>

/// Strings or dictionaries, one handle per value.
///
/// Shape  value (entry, component) is `values[entry * tupleSize + component]`; what makes no whole tuple is not shown
template <class Value> class RQ_API RQ_DAText final : public RQ_DATexts<Value>
{
public:
    /// Take over the values.
    explicit RQ_DAText(BAS_Array<Value> values, int64_t tupleSize = 1, RQ_Type type = RQ_TYPE_NONE);

    const char *className() const override;
    int64_t entries() const override { return int64_t(values_.size()) / this->getTupleSize(); }
    int64_t getMemoryUsage() const override;

protected:
    const Value &valueAt(int64_t offset, int idx) const override;

private:
    BAS_Array<Value> values_;
    BAS_TrackedBytes<BAS_MEMORY_ARRAY> tracked_;
};

using RQ_DAString = RQ_DAText<BAS_StringHolder>;
using RQ_DADict = RQ_DAText<BAS_OptionsHolder>;

extern template class RQ_DAText<BAS_StringHolder>;
extern template class RQ_DAText<BAS_OptionsHolder>;

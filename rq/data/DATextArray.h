#pragma once

#include <host/bas/TrackedBytes.h>
#include <rq/data/CountArray.h>
#include <rq/data/DATexts.h>

/// Entries that are arrays of strings or of dictionaries, of any length each.
///
/// Shape    the values of all entries lie end to end; `getS` and `getDict` take the place within the entry, and give the
///          empty value behind its end
/// Failure  no entries when the counts want more values than there are
template <class Value> class RQ_API RQ_DATextArray final : public RQ_DATexts<Value>
{
public:
    /// Take over the values; entry i has `counts.getCount(i)` of them.
    RQ_DATextArray(BAS_Array<Value> values, const RQ_CountArray &counts, int64_t tupleSize = 1, RQ_Type type = RQ_TYPE_NONE);

    const char *className() const override;
    int64_t entries() const override { return counts_.entries(); }
    int64_t itemSize(int64_t offset) const override { return counts_.getCount(offset); }
    int64_t getTotalArrayEntries() const override { return counts_.sumCounts(); }
    int64_t getMemoryUsage() const override;
    bool hasArrayEntries() const override { return true; }

    bool getSA(BAS_Array<BAS_StringHolder> &strings, int64_t offset) const override;
    bool getDictA(BAS_Array<BAS_OptionsHolder> &dicts, int64_t offset) const override;

protected:
    const Value &valueAt(int64_t offset, int idx) const override;

private:
    template <class Wanted> bool copyEntry(BAS_Array<Wanted> &values, int64_t offset) const;

    BAS_Array<Value> values_;
    BAS_TrackedBytes<BAS_MEMORY_ARRAY> tracked_;
    RQ_CountArray counts_;
};

using RQ_DAStringArray = RQ_DATextArray<BAS_StringHolder>;
using RQ_DADictArray = RQ_DATextArray<BAS_OptionsHolder>;

extern template class RQ_DATextArray<BAS_StringHolder>;
extern template class RQ_DATextArray<BAS_OptionsHolder>;

#pragma once

#include <rq/data/DataArray.h>

/// The base of arrays that hold or generate numbers: it answers for text and dictionaries that there are none.
class RQ_API RQ_DANumbers : public RQ_DataArray
{
public:
    BAS_StringHolder getS(int64_t offset, int idx = 0) const override;
    int64_t getStringIndexCount() const override;
    int64_t getStringIndex(int64_t offset, int idx = 0) const override;
    void getIndexedStrings(BAS_Array<BAS_StringHolder> &strings, BAS_Array<int64_t> &indices) const override;
    int64_t getDictIndexCount() const override;
    int64_t getDictIndex(int64_t offset, int idx = 0) const override;
    void getIndexedDicts(BAS_Array<BAS_OptionsHolder> &dicts, BAS_Array<int64_t> &indices) const override;
};

#pragma once

#include <rq/data/DataArray.h>

/// Text, with every distinct string kept once and an index per value.
///
/// Shape    value (entry, component) is string `index` of the list; an index below 0 or past the list is the empty string
/// Failure  numeric getters answer 0
/// Threads  immutable after construction, safe to read from any thread
class RQ_API RQ_DAIndexedString final : public RQ_DataArray
{
public:
    /// Take over distinct strings and one index per value, `indices.size() / tupleSize` entries.
    RQ_DAIndexedString(BAS_Array<BAS_StringHolder> strings, BAS_ValArray<int32_t> indices, int64_t tupleSize = 1,
                       RQ_Type type = RQ_TYPE_NONE);

    /// Index `entries * tupleSize` strings, given in order.  Distinct strings are numbered by their first use.
    static RQ_DataArrayHandle createIndexed(const BAS_StringHolder *values, int64_t entries, int64_t tupleSize = 1,
                                            RQ_Type type = RQ_TYPE_NONE);

    const char *className() const override;
    RQ_Storage getStorage() const override { return RQ_STORAGE_STRING; }
    int64_t entries() const override;
    int64_t getTupleSize() const override { return tupleSize_; }
    int64_t getMemoryUsage() const override;
    RQ_Type getTypeInfo() const override { return type_; }

    uint8_t getU8(int64_t, int = 0) const override { return 0; }
    int32_t getI32(int64_t, int = 0) const override { return 0; }
    float getF32(int64_t, int = 0) const override { return 0.0f; }
    BAS_StringHolder getS(int64_t offset, int idx = 0) const override;

    int64_t getStringIndexCount() const override { return int64_t(strings_.size()); }
    int64_t getStringIndex(int64_t offset, int idx = 0) const override;
    void getIndexedStrings(BAS_Array<BAS_StringHolder> &strings, BAS_Array<int64_t> &indices) const override;
    void fillStringArray(BAS_StringHolder *data, int64_t start, int64_t length, int tsize = -1,
                         int stride = -1) const override;
    int64_t getDictIndexCount() const override { return -1; }
    int64_t getDictIndex(int64_t, int = 0) const override { return -1; }
    void getIndexedDicts(BAS_Array<BAS_OptionsHolder> &dicts, BAS_Array<int64_t> &indices) const override;

private:
    BAS_Array<BAS_StringHolder> strings_;
    BAS_ValArray<int32_t> indices_;
    int64_t tupleSize_;
    RQ_Type type_;
};

#pragma once

#include <rq/data/DataArray.h>

/// The base of arrays that hold strings (`Value` is `BAS_StringHolder`) or dictionaries (`BAS_OptionsHolder`): it answers
/// all reads from a few, and for numbers that there are none.
///
/// Failure  numeric getters answer 0; strings of dictionaries are empty, and dictionaries of strings
/// Threads  immutable after construction, safe to read from any thread
template <class Value> class RQ_API RQ_DATexts : public RQ_DataArray
{
public:
    RQ_Storage getStorage() const override;
    int64_t getTupleSize() const override { return tupleSize_; }
    RQ_Type getTypeInfo() const override { return type_; }

    uint8_t getU8(int64_t, int = 0) const override { return 0; }
    int32_t getI32(int64_t, int = 0) const override { return 0; }
    float getF32(int64_t, int = 0) const override { return 0.0f; }
    BAS_StringHolder getS(int64_t offset, int idx = 0) const override;
    BAS_OptionsHolder getDict(int64_t offset, int idx = 0) const override;

    int64_t getStringIndexCount() const override;
    int64_t getStringIndex(int64_t offset, int idx = 0) const override;
    void getIndexedStrings(BAS_Array<BAS_StringHolder> &strings, BAS_Array<int64_t> &indices) const override;
    void fillStringArray(BAS_StringHolder *data, int64_t start, int64_t length, int tsize = -1,
                         int stride = -1) const override;
    int64_t getDictIndexCount() const override;
    int64_t getDictIndex(int64_t offset, int idx = 0) const override;
    void getIndexedDicts(BAS_Array<BAS_OptionsHolder> &dicts, BAS_Array<int64_t> &indices) const override;
    void fillDictionaryArray(BAS_OptionsHolder *data, int64_t start, int64_t length, int tsize = -1,
                             int stride = -1) const override;

protected:
    /// A tuple size below 1 becomes 1.
    RQ_DATexts(int64_t tupleSize, RQ_Type type);

    /// A value, in range.
    virtual const Value &valueAt(int64_t offset, int idx) const = 0;

    /// The distinct values, each at its index, and the index of a value; null where values have no index.
    virtual const BAS_Array<Value> *distinct() const { return nullptr; }
    virtual int64_t indexAt(int64_t, int) const { return -1; }

    /// The empty string or dictionary.
    static const Value &none();

    /// Bytes that a list of values takes beside its own object.
    static int64_t memoryOf(const BAS_Array<Value> &values);

private:
    int64_t tupleSize_;
    RQ_Type type_;
};

extern template class RQ_DATexts<BAS_StringHolder>;
extern template class RQ_DATexts<BAS_OptionsHolder>;

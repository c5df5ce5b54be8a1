#pragma once

#include <rq/data/DataArray.h>

/// The base of arrays that view another array: entry i is entry `getIndirect(i)` of the source.
///
/// Shape      storage, tuple size and type are the source's
/// Failure    without a source: not valid, no entries, invalid storage
/// Ownership  shares the source through a handle; `harden` makes an owning copy
/// Threads    immutable after construction, safe to read from any thread
class RQ_API RQ_DAInherit : public RQ_DataArray
{
public:
    const RQ_DataArrayHandle &source() const { return source_; }

    /// The entry of the source that entry `offset` shows.
    virtual int64_t getIndirect(int64_t offset) const = 0;

    /// A copy that lets the source go, of entries that are arrays too.
    RQ_DataArrayHandle harden() const override;

    RQ_Storage getStorage() const override;
    int64_t itemSize(int64_t offset) const override;
    int64_t getTotalArrayEntries() const override;
    int64_t getTupleSize() const override;
    RQ_Type getTypeInfo() const override;
    bool hasArrayEntries() const override;
    bool getPointerAliasing(const void *data) const override;
    bool isValid() const override;

    BAS_StringHolder getS(int64_t offset, int idx = 0) const override;
    bool getSA(BAS_Array<BAS_StringHolder> &strings, int64_t offset) const override;
    BAS_OptionsHolder getDict(int64_t offset, int idx = 0) const override;
    bool getDictA(BAS_Array<BAS_OptionsHolder> &dicts, int64_t offset) const override;
    bool getFA16(BAS_ValArray<PLT_Half> &values, int64_t offset) const override;
    bool getFA32(BAS_ValArray<float> &values, int64_t offset) const override;
    bool getFA64(BAS_ValArray<double> &values, int64_t offset) const override;
    bool getUA8(BAS_ValArray<uint8_t> &values, int64_t offset) const override;
    bool getIA8(BAS_ValArray<int8_t> &values, int64_t offset) const override;
    bool getIA16(BAS_ValArray<int16_t> &values, int64_t offset) const override;
    bool getIA32(BAS_ValArray<int32_t> &values, int64_t offset) const override;
    bool getIA64(BAS_ValArray<int64_t> &values, int64_t offset) const override;

    int64_t getStringIndexCount() const override;
    int64_t getStringIndex(int64_t offset, int idx = 0) const override;

    /// The distinct strings of the source, whether an entry here shows them or not.
    void getIndexedStrings(BAS_Array<BAS_StringHolder> &strings, BAS_Array<int64_t> &indices) const override;
    void getStrings(BAS_Array<BAS_StringHolder> &strings) const override;
    void fillStringArray(BAS_StringHolder *data, int64_t start, int64_t length, int tsize = -1,
                         int stride = -1) const override;

    int64_t getDictIndexCount() const override;
    int64_t getDictIndex(int64_t offset, int idx = 0) const override;
    void getIndexedDicts(BAS_Array<BAS_OptionsHolder> &dicts, BAS_Array<int64_t> &indices) const override;
    void getDictionaries(BAS_Array<BAS_OptionsHolder> &dicts) const override;
    void fillDictionaryArray(BAS_OptionsHolder *data, int64_t start, int64_t length, int tsize = -1,
                             int stride = -1) const override;

    /// Re-bind the source; the view takes a new data id when the source's id changes.
    void updateGeoDetail(const MOD_ConstDetailHandle &detail, const char *name, RQ_Owner owner, int segment) override;

protected:
    RQ_DAInherit() = default;
    explicit RQ_DAInherit(const RQ_DataArrayHandle &source) { setSource(source); }

    void setSource(const RQ_DataArrayHandle &source);

    RQ_DataArrayHandle source_;

private:
    int64_t sourceId_ = -1;  // as last seen: another view of the source may have had it re-bound
};

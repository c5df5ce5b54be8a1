#pragma once

#include <algorithm>

#include <rq/data/TypedArray.h>

/// Several arrays end to end, without copying.
///
/// Shape      the entries of the first part, then those of the second, and so on; storage and tuple size are those of all
///            parts, the type is that of the first part with entries
/// Failure    without parts: not valid, no entries, invalid storage
/// Ownership  shares the parts through handles; `harden` makes an owning copy
/// Threads    immutable after `init`, safe to read from any thread
/// Cost       a value takes a binary search over the parts, a block one call per part.  Distinct texts are merged when the
///            list is made, so that an index means the same text in all parts
class RQ_API RQ_DAList final : public RQ_TypedArray<RQ_DAList>
{
public:
    RQ_DAList() = default;

    /// Show `parts`; replaces what was shown before.  Empty parts are passed over, and lists among them are opened.
    ///
    /// False, and nothing is shown, when there is no part, one is null, they differ in storage, in tuple size or in whether
    /// entries are arrays, or have more entries together than 64 bits hold.
    bool init(const BAS_Array<RQ_DataArrayHandle> &parts);

    /// Show `parts`: the only part that has entries itself when there is just one, a null handle where `init` fails.
    static RQ_DataArrayHandle createList(const BAS_Array<RQ_DataArrayHandle> &parts);

    const BAS_Array<RQ_DataArrayHandle> &parts() const { return parts_; }

    const char *className() const override;
    RQ_DataArrayHandle harden() const override;
    RQ_Storage getStorage() const override;
    int64_t entries() const override { return ends_.empty() ? 0 : ends_.back(); }
    int64_t itemSize(int64_t offset) const override;
    int64_t getTotalArrayEntries() const override;
    int64_t getTupleSize() const override;
    int64_t getMemoryUsage() const override;
    RQ_Type getTypeInfo() const override;
    bool hasArrayEntries() const override;
    bool getPointerAliasing(const void *data) const override;
    bool isValid() const override;
    const void *getBackingData() const override;

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

    // Without an index when one of the parts has none.
    int64_t getStringIndexCount() const override { return strings_.count(); }
    int64_t getStringIndex(int64_t offset, int idx = 0) const override;
    void getIndexedStrings(BAS_Array<BAS_StringHolder> &strings, BAS_Array<int64_t> &indices) const override;
    void fillStringArray(BAS_StringHolder *data, int64_t start, int64_t length, int tsize = -1,
                         int stride = -1) const override;
    int64_t getDictIndexCount() const override { return dicts_.count(); }
    int64_t getDictIndex(int64_t offset, int idx = 0) const override;
    void getIndexedDicts(BAS_Array<BAS_OptionsHolder> &dicts, BAS_Array<int64_t> &indices) const override;
    void fillDictionaryArray(BAS_OptionsHolder *data, int64_t start, int64_t length, int tsize = -1,
                             int stride = -1) const override;

    /// Re-bind all parts; the list takes a new data id when the id of one changes.
    void updateGeoDetail(const MOD_ConstDetailHandle &detail, const char *name, RQ_Owner owner, int segment) override;

private:
    friend RQ_TypedArray<RQ_DAList>;

    struct Place
    {
        size_t part;
        int64_t entry;
    };

    /// The distinct values of all parts, and for each part the number that each of its own indices has here.
    template <class Value> struct Distinct
    {
        bool indexed = false;
        BAS_Array<Value> values;
        BAS_Array<BAS_Array<int64_t>> numbers;

        int64_t count() const { return indexed ? int64_t(values.size()) : -1; }
        int64_t number(size_t part, int64_t index) const
        {
            const bool known = part < numbers.size() && index >= 0 && index < int64_t(numbers[part].size());
            return known ? numbers[part][size_t(index)] : -1;
        }
        void clear() { *this = Distinct(); }
        template <class Read> void merge(const BAS_Array<RQ_DataArrayHandle> &parts, Read &&read);
    };

    bool addPart(const RQ_DataArrayHandle &part);
    Place locate(int64_t offset) const;
    int64_t beginOf(size_t part) const { return part > 0 ? ends_[part - 1] : 0; }

    // Call visit(part, first entry in it, count, entries of the block that lie before) for the parts of a block.
    template <class Visitor> void visitRuns(int64_t start, int64_t length, Visitor &&visit) const;

    template <RQ_NumericValue T> T valueAs(int64_t offset, int component) const;
    template <RQ_NumericValue T> void fillBlock(T *out, int64_t start, int64_t length, int components, int stride) const;
    bool computeMinMax(double *min, double *max) const override;

    BAS_Array<RQ_DataArrayHandle> parts_;
    BAS_Array<int64_t> ends_;     // running totals of the entries
    BAS_Array<int64_t> partIds_;  // as last seen
    Distinct<BAS_StringHolder> strings_;
    Distinct<BAS_OptionsHolder> dicts_;
};

template <class Visitor> void RQ_DAList::visitRuns(int64_t start, int64_t length, Visitor &&visit) const
{
    if (length < 1)
        return;
    int64_t done = 0;
    for (Place place = locate(start); done < length; ++place.part, place.entry = 0)
    {
        const int64_t left = ends_[place.part] - beginOf(place.part) - place.entry;
        const int64_t count = std::min(length - done, left);
        visit(*parts_[place.part], place.entry, count, done);
        done += count;
    }
}

extern template class RQ_TypedArray<RQ_DAList>;

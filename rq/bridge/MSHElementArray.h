#pragma once

#include <host/elm/Attribute.h>
#include <rq/bridge/MSHOffsetList.h>
#include <rq/data/HostBound.h>
#include <rq/data/TypedArray.h>
#include <rq/data/TypedEntries.h>

/// A host attribute seen through a list of element offsets: the array that lets primitives read a detail in place.
///
/// Shape      row i is the attribute's value at element `offsets[i]`; vertex offsets reach point and primitive attributes
///            through the detail's maps, and a detail attribute has the same row everywhere.  Where rows are arrays of
///            varying length, single values and fixed rows are the first ones of an array, and 0 or empty behind its end
/// Failure    not valid, and without rows, when there is no such attribute or it belongs to elements that the offsets cannot
///            reach; a vertex without a point reads the point attributes as zero, as no string and as the empty array
/// Ownership  keeps the snapshot of the detail alive; the attribute stays the host's
/// Threads    safe to read from any thread; `updateGeoDetail` must not race with readers
/// Cost       no copy: where the offsets are a run of the attribute's own elements and the host keeps the values in one
///            block, `getArray` hands out that memory.  Everything else is gathered block by block, and arrays of varying
///            length are always copied.
class RQ_API RQ_MSHElementArray
    : public RQ_TypedArray<RQ_MSHElementArray, RQ_TypedEntries<RQ_MSHElementArray, rq::HostBound>>
{
public:
    /// An attribute of another snapshot stands for the one of the same owner, scope and name in this detail.
    RQ_MSHElementArray(const MOD_ConstDetailHandle &detail, const ELM_Attribute *attribute, const RQ_MSHOffsetList &offsets,
                       ELM_Owner owner);
    ~RQ_MSHElementArray() override;

    /// The element of the attribute's owner that row `i` reads.
    ELM_Offset getDataOffset(int64_t i) const;

    const RQ_MSHOffsetList &getOffsets() const { return offsets_; }
    const MOD_ConstDetailHandle &getGeoDetail() const { return detail_; }

    bool isBoundTo(const MOD_ConstDetailHandle &detail) const override { return detail_ == detail; }
    bool hasTopologyOf(const MOD_ConstDetailHandle &detail) const override;

    /// The array that reads the same rows of the same attribute of another snapshot, whose elements must be the same; null
    /// when it has no such attribute.
    virtual RQ_DataArrayHandle boundTo(const MOD_ConstDetailHandle &detail) const;

    const char *className() const override;

    /// A copy that lets the detail go, of arrays of varying length too.
    RQ_DataArrayHandle harden() const override;

    RQ_Storage getStorage() const override { return storage_; }
    int64_t entries() const override { return attribute_ ? offsets_.entries() : 0; }
    int64_t itemSize(int64_t offset) const override;
    int64_t getTotalArrayEntries() const override;
    int64_t getTupleSize() const override { return tupleSize_; }
    int64_t getMemoryUsage() const override { return int64_t(sizeof(*this)) + offsets_.offsetList().memoryUsage(); }
    RQ_Type getTypeInfo() const override { return type_; }
    bool hasArrayEntries() const override { return attribute_ && attribute_->hasArrays(); }
    bool isValid() const override { return attribute_; }
    bool getPointerAliasing(const void *data) const override;
    const void *getBackingData() const override { return backing_; }

    BAS_StringHolder getS(int64_t offset, int idx = 0) const override;
    bool getSA(BAS_Array<BAS_StringHolder> &strings, int64_t offset) const override;
    int64_t getStringIndexCount() const override;
    int64_t getStringIndex(int64_t offset, int idx = 0) const override;
    void getIndexedStrings(BAS_Array<BAS_StringHolder> &strings, BAS_Array<int64_t> &indices) const override;
    void fillStringArray(BAS_StringHolder *data, int64_t start, int64_t length, int tsize = -1,
                         int stride = -1) const override;

    BAS_OptionsHolder getDict(int64_t offset, int idx = 0) const override;
    bool getDictA(BAS_Array<BAS_OptionsHolder> &dicts, int64_t offset) const override;
    int64_t getDictIndexCount() const override;
    int64_t getDictIndex(int64_t offset, int idx = 0) const override;
    void getIndexedDicts(BAS_Array<BAS_OptionsHolder> &dicts, BAS_Array<int64_t> &indices) const override;
    void fillDictionaryArray(BAS_OptionsHolder *data, int64_t start, int64_t length, int tsize = -1,
                             int stride = -1) const override;

    /// Read the attribute from a newer snapshot, provided that its shape, the number of elements and, where the topology
    /// takes part, the topology are the same; otherwise the array stays as it is: see `isBoundTo`.  Pointers handed out
    /// before stay good until the next re-binding.  `owner` and `segment` play no part.
    void updateGeoDetail(const MOD_ConstDetailHandle &detail, const char *name, RQ_Owner owner, int segment) override;

protected:
    bool computeMinMax(double *min, double *max) const override;
    void doFillQuantizedArray(uint8_t *data, int64_t start, int64_t length, int tsize, int stride, double black,
                              double white) const override;
    void doExtendedQuantizedFill(uint8_t *data, int64_t start, int64_t length, int tsize, int nrepeats, int stride,
                                 double black, double white) const override;
    void doFillVec3BBox(double *dest, int64_t start, int64_t length, BAS_BoundingBox &bbox, int tsize,
                        int stride) const override;
    void doFillVec3BBox(float *dest, int64_t start, int64_t length, BAS_BoundingBox &bbox, int tsize,
                        int stride) const override;

    /// Without an attribute yet: a subclass that makes its own hands it over through `initAttribute`, and keeps it alive.
    RQ_MSHElementArray(const MOD_ConstDetailHandle &detail, const RQ_MSHOffsetList &offsets, ELM_Owner owner);
    void initAttribute(const ELM_Attribute *attribute);

    /// Whether the offsets mean elements of another snapshot just as well, and the change to it.
    bool hasSameElements(const MSH_Detail &newer) const;
    void follow(const MOD_ConstDetailHandle &newer);

private:
    friend RQ_TypedEntries<RQ_MSHElementArray, rq::HostBound>;
    friend RQ_TypedArray<RQ_MSHElementArray, RQ_TypedEntries<RQ_MSHElementArray, rq::HostBound>>;

    /// How a row finds its element.
    enum class Mapping
    {
        DIRECT,
        DETAIL,
        VERTEX_TO_POINT,
        VERTEX_TO_PRIMITIVE
    };

    bool chooseMapping(ELM_Owner attributeOwner);
    void readFrom(const ELM_Attribute *attribute);
    const void *findBackingData() const;
    int64_t computeDataId() const;

    struct Target;
    void fillRows(const Target &target, int64_t start, int64_t length) const;
    template <class S>
    void fillRun(const ELM_PageArray<S> &pages, const Target &target, int64_t start, int64_t length) const;
    template <class S>
    void fillListed(const ELM_PageArray<S> &pages, const Target &target, int64_t start, int64_t length) const;
    template <class Index> const Index *knownElements(int64_t start) const;
    bool isComplete() const;
    template <class Index> bool findListedExtremes(const float *rows, const Index *indices, double *min, double *max) const;
    void findElements(int64_t *elements, int64_t start, int64_t length) const;

    // The element of a row; -1 when there is none, or no attribute.
    ELM_Offset elementOf(int64_t offset) const { return attribute_ ? getDataOffset(offset) : ELM_INVALID_OFFSET; }

    // Call `visit(element, row)` for rows of a block, counted from its first.
    template <class Visit> void visitElements(int64_t start, int64_t length, Visit &&visit) const;

    template <class T>
    void fillBounded(T *dest, int64_t start, int64_t length, BAS_BoundingBox &box, int tsize, int stride) const;

    template <class Value> void fillTexts(Value *data, int64_t start, int64_t length, int tsize, int stride) const;

    // Rows that are arrays of numbers: in their own storage, and in any.
    template <class Visit> void visitNumbers(int64_t start, int64_t length, Visit &&visit) const;
    int64_t countNumbers(int64_t start, int64_t length, int *sizes) const;
    void copyNumbers(int64_t start, int64_t length, void *to) const;
    template <class Values> bool copyEntries(int64_t start, int64_t length, Values &values, BAS_Array<int> *sizes) const;

    template <RQ_NumericValue T> T valueAs(int64_t offset, int component) const;
    template <RQ_NumericValue T> void fillBlock(T *out, int64_t start, int64_t length, int components, int stride) const;

    MOD_ConstDetailHandle detail_;
    MOD_ConstDetailHandle replaced_;  // keeps pointers good that were handed out before the last re-binding
    RQ_MSHOffsetList offsets_;
    ELM_Owner owner_;
    const ELM_Attribute *attribute_ = nullptr;
    Mapping mapping_ = Mapping::DIRECT;
    RQ_Storage storage_ = RQ_STORAGE_INVALID;
    RQ_Type type_ = RQ_TYPE_NONE;
    int64_t tupleSize_ = 0;
    const void *backing_ = nullptr;
};

extern template class RQ_TypedEntries<RQ_MSHElementArray, rq::HostBound>;
extern template class RQ_TypedArray<RQ_MSHElementArray, RQ_TypedEntries<RQ_MSHElementArray, rq::HostBound>>;

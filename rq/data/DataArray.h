#pragma once

#include <host/bas/Array.h>
#include <host/bas/BoundingBox.h>
#include <host/bas/Intrusive.h>
#include <host/bas/OptionsHolder.h>
#include <host/bas/StringHolder.h>
#include <host/fwd.h>
#include <rq/data/NumericTypes.h>
#include <rq/data/types.h>
#include <rq/fwd.h>

class BAS_JSONWriter;

/// Share an array.  A handle may be made from a raw pointer at any time, and the last one deletes the array.
using RQ_DataArrayHandle = BAS_IntrusivePtr<RQ_DataArray>;

/// The base of every attribute array: `entries` tuples of `getTupleSize` components of one storage.
///
/// Arrays own their values, compute them, or view those of another array; a reader never needs to know which.  Single values
/// come from the typed getters (slow: a virtual call each), rows from `get` and `import`, blocks from `fillArray`, and a
/// whole array as contiguous memory from `getArray`.
///
/// Shape      `offset` is an entry, `idx` a component; values of an entry lie side by side.  The order of the virtual
///            operations is part of the interface.
/// Failure    reading out of range is not checked; numeric getters of text and dictionaries answer 0, `getS` of numbers the
///            empty string
/// Ownership  counted; lives on the heap behind an `RQ_DataArrayHandle`
/// Threads    filled by its creator, read-only once shared, and then safe to read from any thread
class RQ_API RQ_DataArray : public BAS_IntrusiveRefCounter<RQ_DataArray>
{
public:
    // Slots 1 to 15: what the array is.

    virtual ~RQ_DataArray();

    /// The class's own name, such as "RQ_DANumeric".
    virtual const char *className() const = 0;

    /// Make a copy that owns its values and keeps the data id.  The array itself when its entries are arrays or its storage
    /// is invalid; null when its storage has no owning form.
    virtual RQ_DataArrayHandle harden() const;

    virtual RQ_Storage getStorage() const = 0;
    virtual int64_t entries() const = 0;

    /// Number of array values in one entry of an array of arrays, 0 otherwise.
    virtual int64_t itemSize(int64_t offset) const;
    virtual int64_t getTotalArrayEntries() const;

    virtual int64_t getTupleSize() const = 0;

    /// Bytes of the object and of what it alone allocated; views do not count their source.
    virtual int64_t getMemoryUsage() const = 0;

    virtual RQ_Type getTypeInfo() const;

    /// True when entries are themselves arrays of varying length.
    virtual bool hasArrayEntries() const;

    /// True when the array's values may lie in the given memory.
    virtual bool getPointerAliasing(const void *data) const;

    virtual bool isValid() const;

    /// Contiguous values in the array's own storage, null when it has none.
    virtual const void *getBackingData() const;

    /// The id that changes whenever the contents change: two arrays of one id hold the same values.
    virtual int64_t getDataId() const;

    // Slots 16 to 27: one value.

    virtual uint8_t getU8(int64_t offset, int idx = 0) const = 0;
    virtual int8_t getI8(int64_t offset, int idx = 0) const;
    virtual int16_t getI16(int64_t offset, int idx = 0) const;
    virtual int32_t getI32(int64_t offset, int idx = 0) const = 0;
    virtual int64_t getI64(int64_t offset, int idx = 0) const;
    virtual PLT_Half getF16(int64_t offset, int idx = 0) const;
    virtual float getF32(int64_t offset, int idx = 0) const = 0;
    virtual double getF64(int64_t offset, int idx = 0) const;
    virtual BAS_StringHolder getS(int64_t offset, int idx = 0) const = 0;
    virtual bool getSA(BAS_Array<BAS_StringHolder> &strings, int64_t offset) const;
    virtual BAS_OptionsHolder getDict(int64_t offset, int idx = 0) const;
    virtual bool getDictA(BAS_Array<BAS_OptionsHolder> &dicts, int64_t offset) const;

    // Slots 28 to 35: one entry of an array of arrays.  False, and `values` untouched, for all other arrays.

    virtual bool getFA16(BAS_ValArray<PLT_Half> &values, int64_t offset) const;
    virtual bool getFA32(BAS_ValArray<float> &values, int64_t offset) const;
    virtual bool getFA64(BAS_ValArray<double> &values, int64_t offset) const;
    virtual bool getUA8(BAS_ValArray<uint8_t> &values, int64_t offset) const;
    virtual bool getIA8(BAS_ValArray<int8_t> &values, int64_t offset) const;
    virtual bool getIA16(BAS_ValArray<int16_t> &values, int64_t offset) const;
    virtual bool getIA32(BAS_ValArray<int32_t> &values, int64_t offset) const;
    virtual bool getIA64(BAS_ValArray<int64_t> &values, int64_t offset) const;

    // Slots 36 to 43: all values as contiguous memory.  The values stay valid as long as `buffer` holds what was put there:
    // the array itself when it already has such values, else a converted copy.

    virtual const uint8_t *getU8Array(RQ_DataArrayHandle &buffer) const;
    virtual const int8_t *getI8Array(RQ_DataArrayHandle &buffer) const;
    virtual const int16_t *getI16Array(RQ_DataArrayHandle &buffer) const;
    virtual const int32_t *getI32Array(RQ_DataArrayHandle &buffer) const;
    virtual const int64_t *getI64Array(RQ_DataArrayHandle &buffer) const;
    virtual const PLT_Half *getF16Array(RQ_DataArrayHandle &buffer) const;
    virtual const float *getF32Array(RQ_DataArrayHandle &buffer) const;
    virtual const double *getF64Array(RQ_DataArrayHandle &buffer) const;

    // Slots 44 to 53: text and dictionaries.  Indexed arrays keep each distinct text once; -1 where there is no index.

    virtual int64_t getStringIndexCount() const = 0;
    virtual int64_t getStringIndex(int64_t offset, int idx = 0) const = 0;

    /// The distinct strings and, beside each, the index that entries refer to it by.
    virtual void getIndexedStrings(BAS_Array<BAS_StringHolder> &strings, BAS_Array<int64_t> &indices) const = 0;

    /// The distinct strings, each at its index; unused indices hold the empty string.
    virtual void getStrings(BAS_Array<BAS_StringHolder> &strings) const;
    virtual void fillStringArray(BAS_StringHolder *data, int64_t start, int64_t length, int tsize = -1,
                                 int stride = -1) const;

    virtual int64_t getDictIndexCount() const = 0;
    virtual int64_t getDictIndex(int64_t offset, int idx = 0) const = 0;
    virtual void getIndexedDicts(BAS_Array<BAS_OptionsHolder> &dicts, BAS_Array<int64_t> &indices) const = 0;
    virtual void getDictionaries(BAS_Array<BAS_OptionsHolder> &dicts) const;
    virtual void fillDictionaryArray(BAS_OptionsHolder *data, int64_t start, int64_t length, int tsize = -1,
                                     int stride = -1) const;

    // Slots 54 to 62: blocks in which every entry is written `nrepeats` times in a row, rows `stride` values apart.

    virtual void extendedFillArray(uint8_t *data, int64_t start, int64_t length, int tsize, int nrepeats, int stride,
                                   double black, double white) const;
    virtual void extendedFill(double *data, int64_t start, int64_t length, int tsize, int nrepeats, int stride) const;
    virtual void extendedFill(float *data, int64_t start, int64_t length, int tsize, int nrepeats, int stride) const;
    virtual void extendedFill(PLT_Half *data, int64_t start, int64_t length, int tsize, int nrepeats, int stride) const;
    virtual void extendedFill(int64_t *data, int64_t start, int64_t length, int tsize, int nrepeats, int stride) const;
    virtual void extendedFill(int32_t *data, int64_t start, int64_t length, int tsize, int nrepeats, int stride) const;
    virtual void extendedFill(int16_t *data, int64_t start, int64_t length, int tsize, int nrepeats, int stride) const;
    virtual void extendedFill(int8_t *data, int64_t start, int64_t length, int tsize, int nrepeats, int stride) const;
    virtual void extendedFill(uint8_t *data, int64_t start, int64_t length, int tsize, int nrepeats, int stride) const;

    // Slots 63 to 70: exactly `size` components of one entry.  Components past the tuple are 0.  Answers `out`.

    virtual const double *get(int64_t offset, double *out, int size) const;
    virtual const float *get(int64_t offset, float *out, int size) const;
    virtual const PLT_Half *get(int64_t offset, PLT_Half *out, int size) const;
    virtual const int64_t *get(int64_t offset, int64_t *out, int size) const;
    virtual const int32_t *get(int64_t offset, int32_t *out, int size) const;
    virtual const int16_t *get(int64_t offset, int16_t *out, int size) const;
    virtual const int8_t *get(int64_t offset, int8_t *out, int size) const;
    virtual const uint8_t *get(int64_t offset, uint8_t *out, int size) const;

    // Slots 71 to 75: the whole array.

    /// Least and greatest value of one component.  Not-a-number is skipped; without any value min is 1.7014117331926443e38
    /// and max -5.877471754111438e-39.
    virtual void getRange(double &min, double &max, int idx = 0) const;

    /// The same for integers; without entries min is the greatest and max the least 64-bit integer.
    virtual void getRange(int64_t &min, int64_t &max, int idx = 0) const;

    /// True when the entries, tuple sizes, storages and all values agree.  The meaning of the tuple does not count, 0 equals
    /// -0, text is compared by its characters, and not-a-number differs from everything except in the very same object.
    virtual bool isEqual(const RQ_DataArray &other) const;

    /// Hash of the values of entries [begin, end).  Equal values of equal storage hash equal.
    virtual uint64_t hashRange(int64_t begin, int64_t end) const;

    /// Read from a newer detail from now on, where the array reads from one at all.  Must not race with readers.
    virtual void updateGeoDetail(const MOD_ConstDetailHandle &detail, const char *name, RQ_Owner owner, int segment);

    // Not virtual.

    /// Read one row: min(tuple size, size) components, all of them when `size` is 0.  The rest of `data` is left alone.
    template <RQ_NumericValue T> void import(int64_t offset, T *data, int size = 0) const { doImport(offset, data, size); }

    /// Read one row quantised: `black` and below is 0, `white` and above 255.
    void import(int64_t offset, uint8_t *data, int size, double black, double white) const
    {
        doImportQuantized(offset, data, size, black, white);
    }

    /// Read one entry of an array of arrays.
    template <RQ_NumericValue T> void import(int64_t offset, BAS_ValArray<T> &values) const
    {
        doImportArray(offset, values);
    }
    bool import(int64_t offset, BAS_Array<BAS_StringHolder> &strings) const { return getSA(strings, offset); }
    bool import(int64_t offset, BAS_Array<BAS_OptionsHolder> &dicts) const { return getDictA(dicts, offset); }

    /// Read a block: of entries [start, start + length) the first min(tsize, tuple size) components, rows `stride` values
    /// apart.  `tsize` below 1 means the tuple size, `stride` below 1 means `tsize`.  What lies between is left alone.
    template <RQ_NumericValue T>
    void fillArray(T *data, int64_t start, int64_t length, int tsize = -1, int stride = -1) const
    {
        doFillArray(data, start, length, tsize, stride);
    }

    /// The same, quantised: floor(clamp((v - black) / (white - black), 0, 1) * 255 + 0.5); when both are equal, 0 below and
    /// 255 from there.
    void fillArray(uint8_t *data, int64_t start, int64_t length, int tsize, int stride, double black, double white) const
    {
        doFillQuantizedArray(data, start, length, tsize, stride, black, white);
    }

    /// Read entries of an array of arrays end to end, with the number of values of each.
    template <RQ_NumericValue T>
    void fillArray(BAS_Array<T> &data, BAS_Array<int> &sizes, int64_t start, int64_t length) const
    {
        doFillArrayAttr(data, sizes, start, length);
    }

    /// The text of one component of every entry.
    void fillStrings(BAS_Array<BAS_StringHolder> &strings, int idx = 0) const;

    /// Read a block of 3-vectors and enlarge `bbox` by them.
    template <std::floating_point T>
    void fillVec3BBox(T *dest, int64_t start, int64_t length, BAS_BoundingBox &bbox, int tsize = 3, int stride = -1) const
    {
        doFillVec3BBox(dest, start, length, bbox, tsize, stride);
    }

    /// All values as contiguous memory of type T; see slots 36 to 43.
    template <RQ_NumericValue T> const T *getArray(RQ_DataArrayHandle &buffer) const;
    const double *getRealArray(RQ_DataArrayHandle &buffer) const { return getF64Array(buffer); }

    /// One value by the getter of type T.
    template <RQ_NumericValue T> T getValue(int64_t offset, int idx = 0) const;

    /// Least and greatest value of every component, `getTupleSize` of each.  Not-a-number is skipped; a component without
    /// any value gets the greatest finite double and its negation.  False for text.
    bool getMinMax(double *min, double *max) const;

    /// Enlarge by every entry as a position (see `rq::Positions`).  Nothing for tuples of fewer than three components.
    void enlargeBounds(BAS_BoundingBox &box) const;

    /// Hash of all values.
    uint64_t hash() const { return hashRange(0, entries()); }

    /// True when the array can serve as indices: one integer component of the width that `mode` asks for.
    bool checkIndexing(RQ_IndexingMode mode) const;

    /// Print the values to standard output and the data id to standard error.  `label` may be null.
    void dumpValues(const char *label) const;

    /// Write as JSON: the plain values (numbers, or arrays of them for larger tuples), or with `describe` a map of "class",
    /// "storage", "type", "size" and "values", from which `rq::loadArray` makes the array again.  The class of views and of
    /// random values is the one that owns such values.  False when the writer failed.
    bool save(BAS_JSONWriter &writer, bool describe = false) const;

    void setDataId(int64_t id) { dataId_ = id; }
    void copyDataId(const RQ_DataArray &other) { dataId_ = other.getDataId(); }

protected:
    /// Take a fresh data id.
    RQ_DataArray();

    /// A copy is another array: it takes a fresh data id.
    RQ_DataArray(const RQ_DataArray &other);
    RQ_DataArray &operator=(const RQ_DataArray &) = delete;

    // Slots 76 to 113: what subclasses do for the operations above.

    virtual bool computeMinMax(double *min, double *max) const;

    virtual void doImport(int64_t offset, double *data, int size) const;
    virtual void doImport(int64_t offset, float *data, int size) const;
    virtual void doImport(int64_t offset, PLT_Half *data, int size) const;
    virtual void doImport(int64_t offset, int64_t *data, int size) const;
    virtual void doImport(int64_t offset, int32_t *data, int size) const;
    virtual void doImport(int64_t offset, int16_t *data, int size) const;
    virtual void doImport(int64_t offset, int8_t *data, int size) const;
    virtual void doImport(int64_t offset, uint8_t *data, int size) const;

    virtual void doImportArray(int64_t offset, BAS_ValArray<double> &values) const;
    virtual void doImportArray(int64_t offset, BAS_ValArray<float> &values) const;
    virtual void doImportArray(int64_t offset, BAS_ValArray<PLT_Half> &values) const;
    virtual void doImportArray(int64_t offset, BAS_ValArray<int64_t> &values) const;
    virtual void doImportArray(int64_t offset, BAS_ValArray<int32_t> &values) const;
    virtual void doImportArray(int64_t offset, BAS_ValArray<int16_t> &values) const;
    virtual void doImportArray(int64_t offset, BAS_ValArray<int8_t> &values) const;
    virtual void doImportArray(int64_t offset, BAS_ValArray<uint8_t> &values) const;

    virtual void doImportQuantized(int64_t offset, uint8_t *data, int size, double black, double white) const;

    virtual void doFillArray(double *data, int64_t start, int64_t length, int tsize, int stride) const;
    virtual void doFillArray(float *data, int64_t start, int64_t length, int tsize, int stride) const;
    virtual void doFillArray(PLT_Half *data, int64_t start, int64_t length, int tsize, int stride) const;
    virtual void doFillArray(int64_t *data, int64_t start, int64_t length, int tsize, int stride) const;
    virtual void doFillArray(int32_t *data, int64_t start, int64_t length, int tsize, int stride) const;
    virtual void doFillArray(int16_t *data, int64_t start, int64_t length, int tsize, int stride) const;
    virtual void doFillArray(int8_t *data, int64_t start, int64_t length, int tsize, int stride) const;
    virtual void doFillArray(uint8_t *data, int64_t start, int64_t length, int tsize, int stride) const;

    virtual void doFillArrayAttr(BAS_Array<double> &data, BAS_Array<int> &sizes, int64_t start, int64_t length) const;
    virtual void doFillArrayAttr(BAS_Array<float> &data, BAS_Array<int> &sizes, int64_t start, int64_t length) const;
    virtual void doFillArrayAttr(BAS_Array<PLT_Half> &data, BAS_Array<int> &sizes, int64_t start, int64_t length) const;
    virtual void doFillArrayAttr(BAS_Array<int64_t> &data, BAS_Array<int> &sizes, int64_t start, int64_t length) const;
    virtual void doFillArrayAttr(BAS_Array<int32_t> &data, BAS_Array<int> &sizes, int64_t start, int64_t length) const;
    virtual void doFillArrayAttr(BAS_Array<int16_t> &data, BAS_Array<int> &sizes, int64_t start, int64_t length) const;
    virtual void doFillArrayAttr(BAS_Array<int8_t> &data, BAS_Array<int> &sizes, int64_t start, int64_t length) const;
    virtual void doFillArrayAttr(BAS_Array<uint8_t> &data, BAS_Array<int> &sizes, int64_t start, int64_t length) const;

    virtual void doFillQuantizedArray(uint8_t *data, int64_t start, int64_t length, int tsize, int stride, double black,
                                      double white) const;
    virtual void doExtendedQuantizedFill(uint8_t *data, int64_t start, int64_t length, int tsize, int nrepeats, int stride,
                                         double black, double white) const;
    virtual void doFillVec3BBox(double *dest, int64_t start, int64_t length, BAS_BoundingBox &bbox, int tsize,
                                int stride) const;
    virtual void doFillVec3BBox(float *dest, int64_t start, int64_t length, BAS_BoundingBox &bbox, int tsize,
                                int stride) const;

private:
    template <class T> const T *makeArray(RQ_DataArrayHandle &buffer) const;

    int64_t dataId_;
};

template <RQ_NumericValue T> const T *RQ_DataArray::getArray(RQ_DataArrayHandle &buffer) const
{
    if constexpr (std::same_as<T, uint8_t>)
        return getU8Array(buffer);
    else if constexpr (std::same_as<T, int8_t>)
        return getI8Array(buffer);
    else if constexpr (std::same_as<T, int16_t>)
        return getI16Array(buffer);
    else if constexpr (std::same_as<T, int32_t>)
        return getI32Array(buffer);
    else if constexpr (std::same_as<T, int64_t>)
        return getI64Array(buffer);
    else if constexpr (std::same_as<T, PLT_Half>)
        return getF16Array(buffer);
    else if constexpr (std::same_as<T, float>)
        return getF32Array(buffer);
    else
        return getF64Array(buffer);
}

template <RQ_NumericValue T> T RQ_DataArray::getValue(int64_t offset, int idx) const
{
    if constexpr (std::same_as<T, uint8_t>)
        return getU8(offset, idx);
    else if constexpr (std::same_as<T, int8_t>)
        return getI8(offset, idx);
    else if constexpr (std::same_as<T, int16_t>)
        return getI16(offset, idx);
    else if constexpr (std::same_as<T, int32_t>)
        return getI32(offset, idx);
    else if constexpr (std::same_as<T, int64_t>)
        return getI64(offset, idx);
    else if constexpr (std::same_as<T, PLT_Half>)
        return getF16(offset, idx);
    else if constexpr (std::same_as<T, float>)
        return getF32(offset, idx);
    else
        return getF64(offset, idx);
}

#pragma once

#include <variant>

#include <host/bas/StringHolder.h>
#include <host/elm/IndexedTuple.h>
#include <host/elm/NumericArrays.h>
#include <host/elm/NumericTuple.h>

class ELM_Attribute;
using ELM_AttributeHandle = BAS_IntrusivePtr<ELM_Attribute>;

/// A named column of values, one per element of its owner (one for the detail).
///
/// Ownership  intrusively counted and shared by all snapshots of a detail between which it did not change
/// Failure    writes throw std::bad_alloc when memory is exhausted; catch it where the edit is opened
/// Threads    constant in a published detail; the mutating members are for the edit that owns the attribute
class HOST_API ELM_Attribute final : public BAS_IntrusiveRefCounter<ELM_Attribute>
{
public:
    /// Take a new data id: process-wide, 64 bits, 1 first, never repeated.  Safe from any thread.
    static int64_t nextDataId();

    /// Create an attribute of zeros (of no strings, no dictionaries).  Null when the storage, tuple size or owner cannot be.
    static ELM_AttributeHandle create(ELM_Owner owner, ELM_Scope scope, const BAS_StringHolder &name, ELM_Storage storage,
                                      int tupleSize, ELM_TypeInfo typeInfo, int64_t size);

    /// Create an attribute whose rows are arrays of varying length, all empty.
    static ELM_AttributeHandle createArrays(ELM_Owner owner, ELM_Scope scope, const BAS_StringHolder &name,
                                            ELM_Storage storage, int tupleSize, ELM_TypeInfo typeInfo, int64_t size);

    /// Create an attribute that is in no dictionary and has no name.
    static ELM_AttributeHandle createDetached(ELM_Owner owner, ELM_Storage storage, int tupleSize, ELM_TypeInfo typeInfo,
                                              int64_t size);

    /// A copy that shares all values until one of both is written.  It keeps the data id.
    ELM_AttributeHandle clone() const { return ELM_AttributeHandle(new ELM_Attribute(*this)); }

    ELM_Owner owner() const { return owner_; }
    ELM_Scope scope() const { return scope_; }
    const BAS_StringHolder &name() const { return name_; }
    ELM_Storage storage() const;
    ELM_StorageClass storageClass() const { return ELMstorageClass(storage()); }
    int tupleSize() const;
    ELM_TypeInfo typeInfo() const { return typeInfo_; }
    int64_t size() const;

    /// Changes whenever values do.
    int64_t dataId() const { return dataId_; }
    void renewDataId() { dataId_ = nextDataId(); }

    // The read interfaces: null when the attribute holds another kind of value.
    const ELM_NumericTuple *numericTuple() const { return std::get_if<ELM_NumericTuple>(&values_); }
    const ELM_StringTuple *strings() const { return std::get_if<ELM_StringTuple>(&values_); }
    const ELM_DictTuple *dicts() const { return std::get_if<ELM_DictTuple>(&values_); }
    const ELM_NumericArrays *numericArrays() const { return std::get_if<ELM_NumericArrays>(&values_); }
    const ELM_StringArrays *stringArrays() const { return std::get_if<ELM_StringArrays>(&values_); }
    const ELM_DictArrays *dictArrays() const { return std::get_if<ELM_DictArrays>(&values_); }

    // The same to write.
    ELM_NumericTuple *numericTuple() { return std::get_if<ELM_NumericTuple>(&values_); }
    ELM_StringTuple *strings() { return std::get_if<ELM_StringTuple>(&values_); }
    ELM_DictTuple *dicts() { return std::get_if<ELM_DictTuple>(&values_); }
    ELM_NumericArrays *numericArrays() { return std::get_if<ELM_NumericArrays>(&values_); }
    ELM_StringArrays *stringArrays() { return std::get_if<ELM_StringArrays>(&values_); }
    ELM_DictArrays *dictArrays() { return std::get_if<ELM_DictArrays>(&values_); }

    /// True when rows are arrays of varying length.
    bool hasArrays() const { return numericArrays() || stringArrays() || dictArrays(); }

    /// The pages as values of type T; null when the storage is another.
    template <class T> const ELM_PageArray<T> *pages() const
    {
        const ELM_NumericTuple *numbers = numericTuple();
        return numbers ? numbers->pages<T>() : nullptr;
    }
    template <class T> ELM_PageArray<T> *pages()
    {
        ELM_NumericTuple *numbers = numericTuple();
        return numbers ? numbers->pages<T>() : nullptr;
    }

    /// All values as one block of memory; null when they are no numbers, scattered, or repeated pages.
    const void *contiguousData() const { return numericTuple() ? numericTuple()->contiguousData() : nullptr; }
    template <class T> const T *contiguousData() const { return pages<T>() ? pages<T>()->contiguous() : nullptr; }

    /// Copy values of the entries [first, first + count) of `rows`, see `ELM_PageArray::copyOut`.  No conversion: false, and
    /// nothing is written, when the storage is not T's.
    template <class T>
    bool copyOut(T *to, const ELM_OffsetList &rows, int64_t first, int64_t count, int components, int64_t stride) const
    {
        if (!pages<T>())
            return false;
        pages<T>()->copyOut(to, rows, first, count, components, stride);
        return true;
    }

    /// All rows as one block to overwrite: every value must be set.  Null when the storage is not T's, or there are no rows.
    /// The block stays good until the attribute is resized or its edit ends.
    template <class T> T *writeAll() { return pages<T>() ? pages<T>()->writeAll() : nullptr; }

    /// The same, keeping what the rows hold.
    template <class T> T *modifyAll() { return pages<T>() ? pages<T>()->modifyAll() : nullptr; }

    /// Replace rows.  False when the storage is not T's or the rows are not there.
    template <class T> bool write(int64_t first, int64_t count, const T *values)
    {
        if (!pages<T>() || first < 0 || count < 0 || first > size() - count)
            return false;
        pages<T>()->write(first, count, values);
        return true;
    }

    /// Change the number of rows; new ones hold zeros (no string, no dictionary, the empty array).
    void resize(int64_t size);

    /// Let rows hold what new ones do again, let row i be what row `rows[i]` was, and turn the rows of a run about.
    void reset(int64_t first, int64_t count);
    void rearrange(const ELM_OffsetList &rows);
    void reverse(int64_t first, int64_t count);

    void defragment();
    int64_t memoryUsage() const;

private:
    using Values =
        std::variant<ELM_NumericTuple, ELM_StringTuple, ELM_DictTuple, ELM_NumericArrays, ELM_StringArrays, ELM_DictArrays>;

    ELM_Attribute(ELM_Owner owner, ELM_Scope scope, const BAS_StringHolder &name, ELM_TypeInfo typeInfo, Values values);
    ELM_Attribute(const ELM_Attribute &) = default;

    template <class Change> void changeRows(Change change);

    ELM_Owner owner_;
    ELM_Scope scope_;
    BAS_StringHolder name_;
    ELM_TypeInfo typeInfo_;
    int64_t dataId_;
    Values values_;
};
